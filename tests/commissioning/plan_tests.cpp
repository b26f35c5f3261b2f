#include "commissioning/AddressRules.h"
#include "commissioning/AddressText.h"
#include "commissioning/Plan.h"

#include <fstream>
#include <gmock/gmock.h>

using namespace commissioning;

namespace {

Camera camera(const char *mac, Mode mode, const std::string &address, const std::string &name = "") {
    Camera camera;
    camera.mac = std::string("025AE30000") + mac;
    camera.name = name;
    camera.adapters = {"eth1"};
    camera.mode = mode;
    camera.word = mode == Mode::Static ? 5 : mode == Mode::Dhcp ? 6 : 4;
    camera.modes = {Mode::Static, Mode::Dhcp, Mode::Auto};
    camera.address = addressFrom(address).value();
    camera.mask = 0xFFFFFF00;
    camera.status = Status::Ok;
    camera.stored = StoredAddresses{camera.address, camera.mask, 0};
    return camera;
}

/// What the plans below are held against.
Inventory site() {
    Inventory inventory;
    Adapter adapter;
    adapter.name = "eth1";
    adapter.addresses = {{0xC0A80A01, 0xFFFFFF00}};
    Adapter other;
    other.name = "eth2";
    other.addresses = {{0x0A000001, 0xFF000000}};
    inventory.adapters = {adapter, other};
    inventory.cameras = {camera("01", Mode::Static, "192.168.10.21", "left"),
                         camera("02", Mode::Static, "192.168.10.22", "right"),
                         camera("03", Mode::Dhcp, "192.168.10.23", "over, \"under\"; \u00E4"),
                         camera("04", Mode::Static, "192.168.10.24", "twin"),
                         camera("05", Mode::Auto, "169.254.3.4", "twin"),
                         camera("06", Mode::Static, "192.168.10.26"), // held
                         camera("07", Mode::Static, "192.168.10.27"), // another has its MAC
                         camera("08", Mode::Dhcp, "192.168.10.28"),   // takes no static addresses, and has none
                         camera("09", Mode::Static, "192.168.10.29")};
    inventory.cameras[5].status = Status::InUse;
    inventory.cameras[5].holder = Holder{0xC0A80AC8, 5555, Process{12, "viewer"}};
    inventory.findings = {{"duplicate-mac", Severity::Error, "eth1", "025AE3000007", {}, "", {}}};
    inventory.cameras[7].modes = {Mode::Dhcp, Mode::Auto};
    inventory.cameras[8].hidden = true;
    inventory.cameras[8].stored.reset();
    return inventory;
}

std::string join(const std::vector<PlanProblem> &problems) {
    std::string text;
    for (const PlanProblem &problem : problems)
        text += std::to_string(problem.line) + ":" + std::to_string(problem.character) + ": " + problem.text + "\n";
    return text;
}

/// Broken.txt: a plan after each line "=== TITLE", and after "---" what is wrong with it.
TEST(Plan, TellsWhatIsWrongAndWhere) {
    std::ifstream file(BROKEN_PLANS);
    std::string title;
    std::string plan;
    std::string problems;
    std::string *pPart = &plan;
    int count = 0;
    const auto check = [&] {
        count += title.empty() ? 0 : 1;
        EXPECT_EQ(problems, title.empty() ? "" : join(review(readPlan(plan), site()).problems)) << title;
    };
    for (std::string line; std::getline(file, line);) {
        if (line.rfind("=== ", 0) == 0) {
            check();
            title = line;
            plan = problems = "";
            pPart = &plan;
        } else if (line == "---")
            pPart = &problems;
        else
            *pPart += line + "\n";
    }
    check();
    EXPECT_LE(15, count);
}

/// Bytes that are seen in no editor, and sizes.
TEST(Plan, IsBoundedAndTellsWhatIsNoText) {
    const std::string head = "camera,name\n";
    std::string many = head;
    for (int i = 0; i < 100000; ++i)
        many += "nobody" + std::to_string(i) + ",\n";
    const struct {
        std::string text, problem;
    } rows[] = {
        {"\xFF\xFE" + std::string("c\0a\0", 4), "0:0: The file is in UTF-16"},
        {std::string("c\0a\0m\0", 6), "1:2: There is a NUL here"},
        {"PK\x03\x04rest", "0:0: The file is a spreadsheet"},
        {head + "left,k\xFChl\n", "2:7: This is no UTF-8"},
        {head + "left,\u00FC\u6444\nx,\"" + std::string("\u00E4\0", 3), "3:5: There is a NUL here"},
        {head + "left," + std::string(5000, 'x'), "2:6: This cell is too long: 5000 bytes."},
        {head + std::string(2000, ','), "2:1025: This line has more than 1024 cells"},
        {head + "left,\"" + std::string(1 << 20, ' ') + "\"", "2:6: The name has 1048576 bytes"},
        {std::string(MaxPlanBytes + 1, '\n'), "0:0: The file has more than 16 MiB"},
        {many, "2:1: There is no camera 'nobody0'.\n"},
    };
    for (const auto &row : rows) {
        const auto problems = review(readPlan(row.text), site()).problems;
        EXPECT_THAT(join(problems), testing::StartsWith(row.problem));
        EXPECT_GE(201U, problems.size());
    }
}

/// What one gets from a spreadsheet where the comma belongs to numbers.
TEST(Plan, ComesFromASpreadsheet) {
    const Plan plan = readPlan("\uFEFFName;Camera ; MODE;Address;mask;Gateway;\r\n"
                               "# line 1;;;;;;\r\n"
                               "\"# over, under\";;;;;;\r\n"
                               ";;;;;;\r\n"
                               "\"front, left; \"\"A\"\"\";02-5a-e3-00-00-01;Static;192.168.10.31/24;;0.0.0.0;\r\n"
                               "\r\n"
                               ";\u00A0right\u00A0;DHCP;;;;\r\n"
                               "\"two\r\nlines\";025AE3000004;;;24;;\r\n"
                               ";x;;;;gone;");
    EXPECT_EQ("camera,mode,address,mask,gateway,name\n"
              "02-5a-e3-00-00-01,static,192.168.10.31,255.255.255.0,0.0.0.0,\"front, left; \"\"A\"\"\"\n"
              "right,dhcp,,,,\n"
              "025AE3000004,,,255.255.255.0,,\"two\r\nlines\"\n"
              "x,,,,,\n",
              planText(plan));
    EXPECT_EQ("10:7: 'gone' is not an IPv4 address.\n", join(plan.problems)); // behind a cell with a line end
    ASSERT_EQ(4U, plan.entries.size());
    EXPECT_EQ(5, plan.entries[0].line);
    EXPECT_EQ(22, plan.entries[0].places[0].character);
    EXPECT_EQ(9, plan.entries[2].places[0].line);
    EXPECT_EQ(1U, readPlan("sep=\t\ncamera\tmode\nx\tauto\n").entries.size());
    EXPECT_EQ(1U, readPlan("camera\rx").entries.size());
}

/// Whatever is there, also what no plan could bring about.
TEST(Plan, OfWhatIsThereChangesNothing) {
    Inventory inventory = site();
    inventory.cameras[0].name = "\" #a\r\n;\t";
    inventory.cameras[1].name = "\xFF";
    inventory.cameras[3].address = 0xC0A80A63; // a temporary one
    inventory.cameras[8].stored = StoredAddresses{inventory.cameras[8].address, 0xFF00FF00, 0};
    const std::string text = planText(planOf(inventory));
    const PlanReview same = review(readPlan(text), inventory);
    EXPECT_EQ("", join(same.problems)) << text;
    EXPECT_EQ(inventory.cameras.size(), same.changes.size());
    EXPECT_FALSE(same.wouldChange());
    EXPECT_EQ(text, planText(readPlan(text)));
}

std::string toString(const PlanReview &review) {
    std::string text = join(review.problems);
    for (const PlannedChange &change : review.changes)
        text += toText(AdapterAddress{change.after.address, change.after.mask}) + " " + toText(change.after.gateway) +
                " " + std::to_string(change.word) + (change.stored ? " stored" : "") +
                (change.addressing ? " addressing" : "") + (change.naming ? " naming" : "") + "\n";
    return text;
}

/// The state after the plan counts, and what is left open is decided as one would expect.
TEST(Plan, IsJudgedByWhatComesOfIt) {
    Inventory inventory = site();
    inventory.cameras[1].stored = StoredAddresses{0xC0A80A16, 0xFFFF0000, 0xC0A80101};
    inventory.cameras[3].address = 0xC0A80A63;        // a temporary one
    inventory.cameras[0].adapters = {"eth2", "eth1"}; // it is behind both
    inventory.cameras[3].word = 7;
    const struct {
        const char *lines, *outcome;
    } rows[] = {
        {"left,,192.168.10.22\nright,,192.168.10.21", // swap; the mask is the adapter's, the gateway out of reach
         "192.168.10.22/24 0.0.0.0 5 stored addressing\n192.168.10.21/24 0.0.0.0 5 stored addressing\n"},
        {"left,,192.168.10.22\nright,,192.168.10.24\n025AE3000004,,192.168.10.21", // rotation
         "192.168.10.22/24 0.0.0.0 5 stored addressing\n192.168.10.24/24 0.0.0.0 5 stored addressing\n"
         "192.168.10.21/24 0.0.0.0 7 stored addressing\n"},
        {"left,,192.168.10.22\nright,dhcp", // an address that is given up
         "192.168.10.22/24 0.0.0.0 5 stored addressing\n0.0.0.0/0 0.0.0.0 6 addressing\n"},
        {"left,,192.168.10.22\nright,,192.168.10.24", // a chain that ends at somebody who stays
         "3:8: The camera with the MAC address 02:5A:E3:00:00:04 has the address 192.168.10.24.\n"
         "192.168.10.22/24 0.0.0.0 5 stored addressing\n192.168.10.24/24 0.0.0.0 5 stored addressing\n"},
        {"left,,10.1.2.3", "10.1.2.3/8 0.0.0.0 5 stored addressing\n"},
        {"right,,192.168.10.22,,192.168.2.1", "192.168.10.22/16 192.168.2.1 5 stored addressing\n"},
        {"right,STATIC,192.168.10.22", "192.168.10.22/16 192.168.1.1 5\n"}, // as it is
        {"025AE3000004,static", "192.168.10.24/24 0.0.0.0 7\n"},
        {"025AE3000004,,192.168.10.24", "192.168.10.24/24 0.0.0.0 7 stored addressing\n"}, // back to its own
        {"025AE3000003,static,,,,x", "192.168.10.23/24 0.0.0.0 5 stored addressing naming\n"},
        {"025AE3000003,,,,,x", "192.168.10.23/24 0.0.0.0 6 naming\n"},         // keeps what a server gave it
        {"025AE3000006,static,192.168.10.26", "192.168.10.26/24 0.0.0.0 5\n"}, // held, but not changed
        {"025AE3000009,,192.168.10.29", "192.168.10.29/24 0.0.0.0 5 stored addressing\n"}, // may be anything
    };
    for (const auto &row : rows)
        EXPECT_EQ(
            row.outcome,
            toString(review(readPlan(std::string("camera,mode,address,mask,gateway,name\n") + row.lines), inventory)))
            << row.lines;

    PlanEntry undone; // as no file can ask for
    undone.camera = "025AE3000003";
    undone.word = 6;
    undone.address = 0xC0A80A40;
    undone.name = "";
    EXPECT_EQ("0.0.0.0/0 0.0.0.0 6 stored addressing naming\n", toString(review({{undone}, {}}, inventory)));
    undone.camera = "025AE3000006";
    EXPECT_THAT(toString(review({{undone}, {}}, inventory)),
                testing::StartsWith("0:0: 025AE3000006: The camera is contr"));
}

} // namespace
