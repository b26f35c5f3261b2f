#include "Lanvane/PlanProgress.h"
#include "Lanvane/PlanTable.h"
#include "QtText.h"
#include "commissioning/AddressRules.h"
#include "commissioning/AddressText.h"

#include <ctime>
#include <gmock/gmock.h>

using namespace commissioning;

namespace {

std::string macOf(int number) { return "025AE300000" + std::to_string(number); }

Camera camera(int number, const char *adapter, const std::string &address, Mode mode) {
    Camera camera;
    camera.mac = macOf(number);
    camera.model = "OL";
    camera.serial = std::to_string(number);
    camera.adapters = {adapter};
    camera.mode = mode;
    camera.word = mode == Mode::Static ? 5 : 6;
    camera.modes = {Mode::Static, Mode::Dhcp, Mode::Auto};
    camera.address = *addressFrom(address);
    camera.mask = 0xFFFFFF00;
    camera.status = Status::Ok;
    camera.stored = StoredAddresses{camera.address, camera.mask, 0};
    return camera;
}

Adapter adapter(const char *name, const std::string &address) {
    Adapter adapter;
    adapter.name = name;
    adapter.addresses = {{*addressFrom(address), 0xFFFFFF00}};
    return adapter;
}

/// Cameras 1 to 4 behind nic0, 192.168.10.1/24; 5 behind nic1, 192.168.20.1/24.
Inventory site() {
    return {{adapter("nic0", "192.168.10.1"), adapter("nic1", "192.168.20.1")},
            {camera(1, "nic0", "192.168.10.140", Mode::Dhcp), camera(2, "nic0", "192.168.10.3", Mode::Dhcp),
             camera(3, "nic0", "192.168.10.4", Mode::Static), camera(4, "nic0", "192.168.10.254", Mode::Static),
             camera(5, "nic1", "172.16.0.5", Mode::Dhcp)},
            {}};
}

/// "ADDRESS MASK" of each row.
QString addresses(const PlanTable &table) {
    QStringList rows;
    for (int row = 0; row < table.rowCount(); ++row)
        rows << table.text(row, PlanColumn::IpAddress) + " " + table.text(row, PlanColumn::Mask).section('.', 3);
    return rows.join("; ");
}

TEST(PlanTable, CountsUpPastWhatIsTaken) {
    PlanTable table({macOf(1), macOf(2), macOf(4), macOf(5)}, site());
    EXPECT_EQ("192.168.10.2", toText(*table.suggestedStart()));
    EXPECT_FALSE(table.canBeApplied()); // nothing would change
    const struct {
        const char *start, *addresses;
    } fills[] = {
        {"192.168.10.2", "192.168.10.2 0; 192.168.10.3 0; 192.168.10.5 0; 192.168.20.2 0"}, // .4 is camera 3's
        {"192.168.10.0", "192.168.10.2 0; 192.168.10.3 0; 192.168.10.5 0; 192.168.20.2 0"}, // not the network's own
        {"192.168.10.254", "192.168.10.254 0; 192.168.11.1 0; 192.168.11.2 0; 192.168.20.254 0"},
        {"10.0.0.7", "10.0.0.7 0; 10.0.0.8 0; 10.0.0.9 0; 10.0.0.10 0"}, // nobody's subnet: told, not guessed
    };
    for (const auto &fill : fills) {
        table.fill(*addressFrom(fill.start));
        EXPECT_EQ(fill.addresses, addresses(table)) << fill.start;
    }
    EXPECT_FALSE(table.canBeApplied());
    EXPECT_TRUE(table.hasProblem(0));
    table.fill(*addressFrom("192.168.10.50"));
    table.exclude({{*addressFrom("192.168.10.51"), "020000000051"}}); // which fills anew
    EXPECT_EQ("192.168.10.50 0; 192.168.10.52 0; 192.168.10.53 0; 192.168.20.50 0", addresses(table));
    EXPECT_TRUE(table.canBeApplied());
    table.setText(0, PlanColumn::IpAddress, "192.168.10.51");
    EXPECT_EQ("Another device, 02:00:00:00:00:51, has the address 192.168.10.51.",
              table.problem(0, PlanColumn::IpAddress));
    EXPECT_FALSE(table.canBeApplied());
    table.setText(0, PlanColumn::IpAddress, "192.168.10.50");
    EXPECT_EQ("OL 1|DHCP 192.168.10.140|Set to Static IP 192.168.10.50/24",
              table.cameraText(0) + "|" + table.nowText(0) + "|" + table.deed(0));
    table.setAll(PlanColumn::Mask, "255.255.0.0"); // what is entered for all stays
    table.setAll(PlanColumn::Gateway, "192.168.10.254");
    table.setAll(PlanColumn::Mode, "dhcp");
    table.fill(*addressFrom("192.168.10.50"));
    EXPECT_EQ("Set to Static IP 192.168.10.50/16, gateway 192.168.10.254", table.deed(0));
    table.setText(0, PlanColumn::Mode, "dhcp");
    EXPECT_EQ(" |Nothing", addresses(table).section(';', 0, 0) + "|" + table.deed(0));
}

TEST(PlanTable, SaysOfEachCellWhatIsWrong) {
    const struct {
        int row;
        PlanColumn column;
        const char *text;
        int row2;
        const char *problem;
    } cases[] = {
        {0, PlanColumn::IpAddress, "192.168.10.x", 0, "'192.168.10.x' is not an IPv4 address."},
        {0, PlanColumn::Mask, "255.0.255.0", 0, "'255.0.255.0' is not a subnet mask."},
        {0, PlanColumn::Name, "seventeen letters", 0, "The name has 17 bytes. At most 16 are possible."},
        {0, PlanColumn::Mode, "fixed", 0, "'fixed' is no mode. The modes are static, dhcp and auto."},
        {1, PlanColumn::IpAddress, "192.168.10.50", 1,
         "The camera 02:5A:E3:00:00:01 (line 1) gets the address 192.168.10.50, too."},
        {0, PlanColumn::Gateway, "192.168.10.255", 0, nullptr},
        {0, PlanColumn::IpAddress, "192.168.10.4", 0, nullptr},
    };
    for (const auto &each : cases) {
        PlanTable table({macOf(1), macOf(2)}, site());
        table.fill(*addressFrom("192.168.10.50"));
        table.setText(each.row, each.column, each.text);
        EXPECT_FALSE(table.canBeApplied()) << each.text;
        const QString problem = table.problem(each.row2, each.column);
        EXPECT_NE("", problem) << each.text;
        EXPECT_EQ(each.problem ? each.problem : problem, problem);
        EXPECT_EQ(problem, table.deed(each.row2));
        table.fill(*addressFrom("192.168.10.50"));
        for (const PlanColumn column : {PlanColumn::Gateway, PlanColumn::Name})
            table.setAll(column, "");
        EXPECT_TRUE(table.canBeApplied()) << each.text;
    }
    PlanTable table(readPlan("camera,mode,address\n3,static,192.168.10.7\nnobody,dhcp,\n192.168.10.3,fixed,\n"), site(),
                    true);
    EXPECT_EQ("Line 4, character 14: 'fixed' is no mode. The modes are static, dhcp and auto.\n", table.problems());
    EXPECT_EQ("There is no camera 'nobody'.", table.problem(1, PlanColumn::Camera));
    EXPECT_EQ("02:5A:E3:00:00:02 nobody 3",
              table.text(2, PlanColumn::Camera) + " " + table.cameraText(1) + " " + QString::number(table.number(1)));
    table.removeRows({1});
    table.setText(1, PlanColumn::Mode, "dhcp");
    EXPECT_FALSE(table.canBeApplied()); // the file must be right
}

TEST(PlanTable, FollowsEachKeyWithThousandsOfRows) {
    constexpr int Count = 2000;
    Inventory many{{adapter("nic0", "10.0.0.1")}, {}, {}};
    many.adapters[0].addresses[0].mask = 0xFFFF0000;
    std::vector<std::string> macs;
    for (int i = 0; i < 2 * Count; ++i) { // half of them stay as they are
        many.cameras.push_back(camera(i, "nic0", "10.0.0.2", Mode::Dhcp));
        many.cameras.back().address += static_cast<Address>(i);
        many.cameras.back().mac = QString("025AE3%1").arg(i, 6, 16, QChar('0')).toUpper().toStdString();
        if (i < Count)
            macs.push_back(many.cameras.back().mac);
    }
    PlanTable table(macs, many);
    table.fill(*addressFrom("10.0.20.1"));
    const std::clock_t start = std::clock();
    table.setText(Count - 1, PlanColumn::IpAddress, "10.0.40.1");
    EXPECT_LT(std::clock() - start, CLOCKS_PER_SEC / 2) << "a debug build takes several times as long as the others";
    EXPECT_EQ("", table.problem(Count - 1, PlanColumn::IpAddress));
    table.setText(Count - 1, PlanColumn::IpAddress, "10.0.15.160");
    EXPECT_NE("", table.problem(Count - 1, PlanColumn::IpAddress)); // of one that stays
    table.setAll(PlanColumn::Mask, "255.255.255.x");
    EXPECT_EQ("'255.255.255.x' is not a subnet mask.", table.deed(199)); // however many more there are
}

TEST(PlanTable, WhatFailedIsTriedAgainAndOnlyThat) {
    PlanTable table({macOf(1), macOf(2)}, site());
    table.fill(*addressFrom("192.168.10.50"));
    PlanOutcome outcome;
    for (const PlannedChange &change : table.review().changes)
        outcome.records.push_back({change, PlanState::Done, {}});
    outcome.records[1].state = PlanState::NotBegun;
    outcome.records[1].result.text = "It was not begun, as a stop was requested.";
    Inventory now = site();
    now.cameras[0] = camera(1, "nic0", "192.168.10.50", Mode::Static);
    table.take(outcome, now);
    EXPECT_EQ("Done|Nothing|Not begun: It was not begun, as a stop was requested.|Set to Static IP 192.168.10.51/24",
              table.outcome(0) + "|" + table.deed(0) + "|" + table.outcome(1) + "|" + table.deed(1));
    EXPECT_EQ("0 1 1", QString("%1 %2 %3").arg(table.hasFailed(0)).arg(table.hasFailed(1)).arg(table.changeCount()));
    outcome.records[0].state = PlanState::Unchanged;
    outcome.records[1] = {outcome.records[1].change, PlanState::Done, {}};
    table.take(outcome, now);
    EXPECT_EQ("Done Done", table.outcome(0) + " " + table.outcome(1));
}

TEST(PlanProgress, GrowsThroughBothGroups) {
    PlanProgress progress(10);
    int last = -1;
    const auto take = [&](PlanPhase phase, std::size_t done, std::size_t all) {
        progress.take(phase, done, all);
        EXPECT_GE(progress.percent(), last);
        last = progress.percent();
    };
    take(PlanPhase::Reading, 0, 10);
    EXPECT_EQ("Reading the cameras again...", progress.text());
    for (const std::size_t group : {1U, 9U}) {
        for (const PlanPhase phase : {PlanPhase::Writing, PlanPhase::Restarting, PlanPhase::Verifying})
            take(phase, group, group);
        EXPECT_NEAR(group == 1 ? 9 : 90, last, 1);
    }
    EXPECT_EQ("Waiting for the cameras to come back: 9 of 9", progress.text());
}

} // namespace
