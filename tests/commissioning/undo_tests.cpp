#include "commissioning/AddressText.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Undo.h"

#include <gmock/gmock.h>

using namespace commissioning;

namespace {

constexpr Address Base = 0xC0A80A00; ///< 192.168.10.0
constexpr Address Mask = 0xFFFFFF00;
constexpr std::uint32_t Static = 5;
constexpr std::uint32_t Dhcp = 6;

std::string macOf(int number) { return "025AE300000" + std::to_string(number); }

/// A state: word, last byte of the stored address (-1: not known), name.
struct State {
    std::uint32_t word;
    int stored;
    std::string name;
};

Snapshot snapshot(const State &state) {
    const StoredAddresses stored{state.stored == 0 ? 0 : Base + static_cast<Address>(state.stored), Mask, 0};
    const StoredAddresses current = state.stored > 0 ? stored : StoredAddresses{Base + 99, Mask, 0};
    return {state.word, current, state.stored < 0 ? std::nullopt : std::optional(stored), state.name};
}

struct Change {
    const char *id, *plan, *what;
    int camera;
    State before, after;
    Fate fate = Fate::Done;
    const char *undoes = "";
};

JournalEntry entryOf(const Change &change) {
    JournalEntry entry;
    entry.id = change.id;
    entry.plan = change.plan;
    entry.undoes = change.undoes;
    entry.what = change.what;
    entry.mac = macOf(change.camera);
    entry.before = snapshot(change.before);
    const Snapshot after = snapshot(change.after);
    const bool isStatic = change.after.word == Static;
    entry.wanted = {isStatic ? Mode::Static : Mode::Dhcp, isStatic ? after.stored.value_or(after.current).address : 0,
                    isStatic ? Mask : 0, 0, change.after.name};
    entry.fate = change.fate;
    if (change.fate != Fate::Open)
        entry.after = after;
    return entry;
}

/// "1 5 192.168.10.21 name;" for each camera: what the plan sets. Then "!" and problems, "?" and losses.
std::string shown(const Undo &undo) {
    std::string text;
    for (const PlanEntry &entry : undo.plan.entries) {
        text += entry.camera.substr(16) + (entry.word ? " w" + std::to_string(*entry.word) : "") +
                (entry.address ? " " + toText(*entry.address) : "") + (entry.name ? " n" + *entry.name : "") + "; ";
    }
    for (const PlanProblem &problem : undo.plan.problems)
        text += "! " + problem.text;
    for (const UndoLoss &loss : undo.losses)
        text += "? " + loss.text;
    return text;
}

TEST(UndoOf, RestoresWhatWasBefore) {
    const State left{Static, 21, "left"}, moved{Static, 31, "left"}, again{Static, 41, "left"}, dhcp{Dhcp, 21, ""};
    const Change plain{"a", "", "set", 1, left, moved};
    const struct {
        const char *name;
        std::vector<Change> changes;
        const char *id;
        std::vector<State> now; ///< of cameras 1, 2, ...
        const char *undo, *forced;
    } rows[] = {
        {"plain", {plain}, "a", {moved}, "1 192.168.10.21; ", nullptr},
        {"as it was",
         {plain},
         "a",
         {left},
         "1; ! 02:5A:E3:00:00:01: It is no longer as the change of t left it: "
         "stored addresses.",
         "1; ? It is no longer as the change of t left it: stored addresses."},
        {"twice", {plain, {"b", "", "set", 1, moved, again}}, "b", {again}, "1 192.168.10.31; ", nullptr},
        {"changed since",
         {plain, {"b", "", "name", 1, moved, {Static, 31, "x"}}},
         "a",
         {{Static, 31, "x"}},
         "1 192.168.10.21 nleft; ! 02:5A:E3:00:00:01: It is no longer as the change of t left it: name.",
         "1 192.168.10.21 nleft; ? It is no longer as the change of t left it: name."},
        {"undone", {plain, {"b", "q", "undo", 1, moved, left, Fate::Done, "a"}}, "a", {left}, "", nullptr},
        {"an undo that failed",
         {plain, {"b", "q", "undo", 1, moved, moved, Fate::Failed, "a"}},
         "a",
         {moved},
         "1 192.168.10.21; ",
         nullptr},
        {"the undo undone",
         {plain,
          {"b", "q", "undo", 1, moved, left, Fate::Done, "a"},
          {"c", "r", "undo", 1, left, moved, Fate::Done, "q"}},
         "a",
         {moved},
         "1 192.168.10.21; ",
         nullptr},
        {"undo of an undo",
         {plain, {"b", "q", "undo", 1, moved, left, Fate::Done, "a"}},
         "q",
         {left},
         "1 192.168.10.31; ",
         nullptr},
        {"rolled back",
         {{"a", "p", "plan", 1, left, moved, Fate::RolledBack}, {"b", "p", "rollback", 1, moved, left}},
         "p",
         {left},
         "",
         nullptr},
        {"died half-way",
         {{"a", "p", "plan", 1, dhcp, {Static, 31, "x"}, Fate::Open}},
         "p",
         {{Static, 21, ""}},
         "1 w6; ",
         nullptr},
        {"swap",
         {{"a", "p", "plan", 1, left, moved}, {"b", "p", "plan", 2, moved, left}},
         "p",
         {moved, left},
         "1 192.168.10.21; 2 192.168.10.31; ",
         nullptr},
        {"twice in a plan",
         {{"a", "p", "plan", 1, left, moved}, {"b", "p", "plan", 1, moved, again}},
         "p",
         {again},
         "1 192.168.10.21; ",
         nullptr},
        {"a temporary address",
         {{"a", "p", "temporary", 1, left, again}, {"b", "p", "plan", 1, left, moved}},
         "p",
         {moved},
         "1 192.168.10.21; ",
         nullptr},
        {"one forced", {{"a", "", "force", 1, left, left}}, "a", {left}, "", nullptr},
        {"of a mode whose address cannot be read",
         {{"a", "", "set", 1, {Static, -1, ""}, {Dhcp, -1, ""}}},
         "a",
         {{Dhcp, -1, ""}},
         "1 w5 192.168.10.99; ! 02:5A:E3:00:00:01: What it had stored as its static address is not known: it gets the "
         "one it had then.",
         "1 w5 192.168.10.99; ? What it had stored as its static address is not known: it gets the one it had then."},
        {"DHCP keeps old addresses",
         {{"a", "", "set", 1, dhcp, {Static, 31, ""}}},
         "a",
         {{Static, 31, ""}},
         "1 w6 192.168.10.21; ",
         nullptr},
        {"DHCP without",
         {{"a", "", "set", 1, {Dhcp, 0, ""}, {Static, 31, ""}}},
         "a",
         {{Static, 31, ""}},
         "1 w6; ? It had no static address stored, and none cannot be written: it keeps the new "
         "one.",
         nullptr},
        {"DHCP, unread",
         {{"a", "", "set", 1, {Dhcp, -1, ""}, {Static, 31, ""}}},
         "a",
         {{Static, 31, ""}},
         "1 w6; ? What it had stored as its static address is not known: it keeps the new one.",
         nullptr},
        {"static, unread",
         {{"a", "", "set", 1, {Static, -1, ""}, {Static, 31, ""}}},
         "a",
         {{Static, 31, ""}},
         "1 192.168.10.99; ! 02:5A:E3:00:00:01: What it had stored as its static address is not known: it gets the "
         "one it had then.",
         nullptr},
        {"only the name",
         {{"a", "", "name", 1, {Static, -1, "x"}, {Static, -1, "y"}}},
         "a",
         {{Static, 21, "y"}},
         "1 nx; ",
         nullptr},
        {"static and DHCP",
         {{"a", "", "set", 1, {7, 21, ""}, {Static, 31, ""}}},
         "a",
         {{Static, 31, ""}},
         "1 w7 192.168.10.21; ",
         nullptr},
        {"no link-local",
         {{"a", "", "set", 1, {2, 21, ""}, {Static, 21, ""}}},
         "a",
         {{Static, 21, ""}},
         "1 w6; ! 02:5A:E3:00:00:01: It was set to use no link-local address, which cannot be restored.",
         nullptr},
        {"pauses of another kind stay",
         {{"a", "", "set", 1, {Dhcp, 21, ""}, {Static, 21, ""}}},
         "a",
         {{0x80000005, 21, ""}},
         "1 w2147483654; ",
         nullptr},
        {"an unreadable name",
         {{"a", "", "name", 1, {Static, 21, "\uFFFD"}, {Static, 21, "y"}}},
         "a",
         {{Static, 21, "y"}},
         "1; ! 02:5A:E3:00:00:01: Its old name had bytes that are no UTF-8: it cannot be "
         "restored.",
         nullptr},
        {"gone",
         {plain},
         "a",
         {},
         "! 02:5A:E3:00:00:01: There is no such camera now.",
         "? There is no such camera now."},
        {"unknown", {plain}, "z", {moved}, "! The journal has no change and no plan 'z'.", nullptr},
    };
    for (const auto &row : rows) {
        std::vector<JournalEntry> entries;
        for (const Change &change : row.changes)
            entries.push_back(entryOf(change));
        for (JournalEntry &entry : entries)
            entry.time = "t";
        Inventory inventory;
        for (const State &now : row.now) {
            const Snapshot has = snapshot(now);
            Camera camera;
            camera.mac = macOf(static_cast<int>(inventory.cameras.size()) + 1);
            camera.word = now.word;
            camera.address = has.current.address;
            camera.stored = has.stored;
            camera.name = now.name;
            inventory.cameras.push_back(camera);
        }
        EXPECT_EQ(row.undo, shown(undoOf(row.id, entries, inventory, false))) << row.name;
        if (row.forced) {
            EXPECT_EQ(row.forced, shown(undoOf(row.id, entries, inventory, true))) << row.name;
        }
    }
}

TEST(UndoOf, FindsTheLastChange) {
    const State any{Static, 21, ""};
    std::vector<JournalEntry> entries;
    for (const Change &change : {Change{"a", "", "set", 1, any, any}, Change{"b", "p", "plan", 1, any, any},
                                 Change{"c", "p", "temporary", 1, any, any}, Change{"d", "", "force", 1, any, any},
                                 Change{"e", "q", "undo", 1, any, any}, Change{"f", "", "set", 2, any, any}})
        entries.push_back(entryOf(change));
    EXPECT_EQ("b f ", lastChangeOf(macOf(1), entries) + " " + lastChangeOf(macOf(2), entries) + " " +
                          lastChangeOf(macOf(3), entries));
    EXPECT_EQ("p", lastPlanIn(entries));
    EXPECT_EQ("", lastPlanIn({}));

    const State other{Static, 22, ""};
    entries.clear();
    EXPECT_EQ("", lastStandingIn(entries));
    const struct {
        Change change;
        const char *standing;
    } steps[] = {{{"a", "", "set", 1, any, other}, "a"},
                 {{"b", "p", "plan", 2, any, other}, "p"},
                 {{"c", "", "force", 1, any, other}, "p"}, // nothing stored
                 {{"d", "", "set", 1, any, any}, "p"},     // as it was
                 {{"e", "q", "undo", 2, other, any, Fate::Failed, "p"}, "p"},
                 {{"f", "r", "undo", 2, other, any, Fate::Done, "p"}, "a"},
                 {{"g", "s", "undo", 1, other, any, Fate::Done, "a"}, ""}};
    for (const auto &step : steps) {
        entries.push_back(entryOf(step.change));
        EXPECT_EQ(step.standing, lastStandingIn(entries)) << step.change.id;
    }
}

} // namespace
