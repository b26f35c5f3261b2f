#include "commissioning/AddressText.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Events.h"
#include "commissioning/Recollection.h"

#include <gmock/gmock.h>
#include <sstream>

using namespace commissioning;

namespace {

Camera cameraOf(char name, Address lastByte, const std::string &adapters) {
    Camera camera;
    camera.mac = std::string("025AE300000") + name;
    camera.address = 0xC0A80A00 + lastByte;
    camera.mask = 0xFFFFFF00;
    camera.mode = Mode::Static;
    camera.word = 5; // persistent and link-local
    camera.modes = {Mode::Static, Mode::Dhcp};
    camera.stored = StoredAddresses{camera.address, camera.mask, 0};
    camera.status = Status::Ok;
    std::istringstream names(adapters.empty() ? "n0" : adapters);
    for (std::string adapter; std::getline(names, adapter, '+');)
        camera.adapters.push_back(adapter);
    return camera;
}

/// A search in short: "A21" is camera A at 192.168.10.21, "A21:n0+n1" one that was heard on two adapters, "!CODE:A" a
/// finding about it, "?CODE:n0" one about an adapter; the number of each finding's evidence is another one each time.
Inventory inventoryOf(const std::string &text) {
    static int number = 0;
    Inventory inventory;
    Adapter adapter;
    adapter.name = "n0";
    adapter.addresses = {{0xC0A80A01, 0xFFFFFF00}};
    inventory.adapters.push_back(adapter);
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        const std::string subject = word.find(':') == std::string::npos ? "" : word.substr(word.find(':') + 1);
        if (word[0] != '!' && word[0] != '?') {
            inventory.cameras.push_back(cameraOf(word[0], static_cast<Address>(std::stoi(word.substr(1))), subject));
            continue;
        }
        Finding finding;
        finding.code = word.substr(1, word.find(':') - 1);
        (word[0] == '!' ? finding.camera : finding.adapter) = word[0] == '!' ? "025AE300000" + subject : subject;
        finding.text = "counted " + std::to_string(++number);
        inventory.findings.push_back(finding);
    }
    return inventory;
}

std::string textOf(const std::vector<Event> &events) {
    std::string text;
    for (const Event &event : events) {
        text += (text.empty() ? "" : "; ") + std::string(toText(event.kind));
        text += event.camera ? std::string(" ") + event.camera->mac.back() : "";
        for (const Difference &one : event.differences)
            text += " " + one.what + " " + one.before + ">" + one.after;
        text += event.finding ? " " + event.finding->code : "";
        text += event.problem ? " " + std::to_string(event.problem->line) : "";
    }
    return text;
}

/// \param searches with the events that they make.
void expectEvents(const char *what, const std::vector<std::pair<const char *, const char *>> &searches) {
    Watcher watcher;
    for (const auto &[search, events] : searches)
        EXPECT_EQ(events, textOf(watcher.compare(inventoryOf(search)))) << what << ": " << search;
}

TEST(Watcher, TellsWhatHasHappenedAndNothingElse) {
    const char *const moved = "changed A address 192.168.10.21>192.168.10.22 stored 192.168.10.21/24>192.168.10.22/24";
    expectEvents("the first search is no event", {{"A21 !in-use:A", ""}, {"A21 !in-use:A", ""}});
    expectEvents("a camera comes and goes", {{"", ""}, {"A21", "appeared A"}, {"", ""}, {"", "vanished A"}, {"", ""}});
    expectEvents("one lost answer", {{"A21 B22", ""}, {"B22", ""}, {"A21 B22", ""}, {"B22", ""}, {"A21 B22", ""}});
    expectEvents("a new address", {{"A21", ""}, {"A22", moved}});
    expectEvents("changed while it was missed", {{"A21", ""}, {"", ""}, {"A22", moved}});
    expectEvents("adapters in any order", {{"A21:n0+n1", ""}, {"A21:n1+n0", ""}});
    expectEvents("one lost answer of two", {{"A21:n0+n1", ""}, {"A21:n0", ""}, {"A21:n0+n1", ""}, {"A21:n1", ""}});
    expectEvents("unplugged from one",
                 {{"A21:n0+n1", ""}, {"A21:n0", ""}, {"A21:n0", "changed A adapters n0, n1>n0"}, {"A21:n0", ""}});
    expectEvents("moved to another", {{"A21:n0", ""}, {"A21:n1", "changed A adapters n0>n1"}});
    expectEvents("findings with numbers that move",
                 {{"?filter:n0", ""}, {"?filter:n0", ""}, {"?filter:n0 ?filter:n0", ""}});
    expectEvents("a finding comes and goes",
                 {{"A21", ""}, {"A21 !in-use:A", "finding-came in-use"}, {"A21", ""}, {"A21", "finding-went in-use"}});
    expectEvents("of each its own",
                 {{"?x:n0", ""}, {"?x:n0 ?x:n1", "finding-came x"}, {"?x:n1", ""}, {"?x:n1", "finding-went x"}});
    expectEvents("silence is none while a camera is missed",
                 {{"A21", ""}, {"?no-answer:n0", ""}, {"?no-answer:n0", "vanished A; finding-came no-answer"}});
    expectEvents("two cameras with one MAC",
                 {{"A21 !duplicate-mac:A", ""}, {"A22 !duplicate-mac:A", ""}, {"A21 A22", ""}});
}

TEST(Watcher, TellsWhoLeavesThePlan) {
    const std::string header = "camera,mode,address,mask,gateway,name\n";
    const std::string good = header + "025AE300000A,static,192.168.10.21,,,\n";
    const struct {
        const char *search;
        std::string plan;
        const char *events;
        std::size_t offPlan;
    } rows[] = {
        {"A21 B22", good, "", 0},
        {"A23 B22", good, "drifted A address 192.168.10.21>192.168.10.23", 1},
        {"B22", good, "", 1}, // one lost answer
        {"A23 B23", good, "", 1},
        {"A23", "camera\n\"", "plan-problem 2", 1}, // and nobody is back on it
        {"A23", good, "plan-problem-went 2", 1},
        {"A21", good, "back-on-plan A", 0},
        {"A21", header + "025AE300000A,static,192.168.10.29,,,\n", "drifted A address 192.168.10.29>192.168.10.21", 1},
        {"A21", header + "025AE300000A,dhcp,,,,\n", "", 1},
        {"A21", header, "", 0},
    };
    Watcher watcher;
    for (const auto &row : rows) {
        watcher.compare(inventoryOf(row.search));
        EXPECT_EQ(row.events, textOf(watcher.compare(readPlan(row.plan)))) << row.search << " " << row.plan;
        EXPECT_EQ(row.offPlan, watcher.offPlan()) << row.search << " " << row.plan;
    }
    // What only a held camera's word could tell is no drift.
    Inventory held = inventoryOf("A21");
    held.cameras[0].stored.reset();
    watcher.compare(held);
    EXPECT_EQ("", textOf(watcher.compare(readPlan(good))));
}

TEST(Rounds, DoNotDriftNorPileUp) {
    const Recollection::Time first;
    const auto at = [&](int ms) { return first + std::chrono::milliseconds(ms); };
    const std::pair<int, int> rows[] = {{0, 1000}, {300, 1000}, {999, 1000}, {1000, 2000}, {4700, 5000}};
    for (const auto &[now, next] : rows)
        EXPECT_EQ(at(next), nextRound(first, std::chrono::seconds(1), at(now))) << now;
}

/// One that moves twice is asked again soon, one that moves all the time is not asked all the time.
TEST(Recollection, AsksAgainWhoChanges) {
    Recollection recollection;
    const std::pair<int, const char *> rows[] = {{0, "1"},  {1, "2"},  {5, "2"}, {6, "3"},
                                                 {10, "3"}, {11, "4"}, {58, "4"}};
    std::string asked;
    std::string stored; // what one that is not asked has stored, is known unless it has changed
    for (const auto &[now_s, address] : rows) {
        SearchOptions options;
        recollection.attach(&options, Recollection::Time(std::chrono::seconds(now_s)));
        Corvo::CQuorelGigEDeviceInfo device;
        device.SetMacAddress("025AE3000001").SetIpAddress((std::string("10.0.0.") + address).c_str());
        device.SetPropertyValue(PropertyVerdict, std::to_string(Corvo::Accessibility_Ok).c_str());
        if (options.recall(device)) {
            stored += storedAddressesOf(device) ? "known " : "unknown ";
            continue;
        }
        setStoredAddresses(device, {});
        options.judged(device);
        asked += std::to_string(now_s) + " ";
    }
    EXPECT_EQ("0 1 10 58 ", asked);
    EXPECT_EQ("known unknown unknown ", stored);
}

} // namespace
