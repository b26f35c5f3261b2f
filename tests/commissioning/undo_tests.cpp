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
    entry.time = "t";
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

/// "1 w5 .21 nleft; " for each camera: what the plan sets. Then "!" and problems, "?" and losses.
std::string shown(const Undo &undo) {
    std::string text;
    for (const PlanEntry &entry : undo.plan.entries)
        text += entry.camera.substr(16) + (entry.word ? " w" + std::to_string(*entry.word) : "") +
                (entry.address ? " ." + std::to_string(*entry.address - Base) : "") +
                (entry.name ? " n" + *entry.name : "") + "; ";
    for (const PlanProblem &problem : undo.plan.problems)
        text += "! " + problem.text;
    for (const UndoLoss &loss : undo.losses)
        text += "? " + loss.text;
    return text;
}

/// Of changes, by an id, where cameras 1, 2, ... have this. \param forced where it is tried, too.
void expectUndo(const char *name, const std::vector<Change> &changes, const char *id, const std::vector<State> &has,
                const std::string &undo, const std::string &forced = "") {
    std::vector<JournalEntry> entries;
    for (const Change &change : changes)
        entries.push_back(entryOf(change));
    Inventory inventory;
    for (const State &now : has) {
        const Snapshot known = snapshot(now);
        Camera camera;
        camera.mac = macOf(static_cast<int>(inventory.cameras.size()) + 1);
        camera.word = now.word;
        camera.address = known.current.address;
        camera.stored = known.stored;
        camera.name = now.name;
        inventory.cameras.push_back(camera);
    }
    EXPECT_EQ(undo, shown(undoOf(id, entries, inventory, false))) << name;
    if (!forced.empty()) {
        EXPECT_EQ(forced, shown(undoOf(id, entries, inventory, true))) << name;
    }
}

TEST(UndoOf, RestoresWhatWasBefore) {
    const std::string problem = "! 02:5A:E3:00:00:01: ";
    const std::string altered = "It is no longer as the change of t left it: ";
    const std::string unknown = "What it had stored as its static address is not known: ";
    const std::string then = unknown + "it gets the one it had then.";
    const State left{Static, 21, "left"}, moved{Static, 31, "left"}, again{Static, 41, "left"};
    const State dhcp{Dhcp, 21, ""}, renamed{Static, 31, "x"}, plain{Static, 31, ""}, home{Static, 21, ""};
    const State unread{Static, -1, ""}, unreadDhcp{Dhcp, -1, ""}, named{Static, 21, "y"};
    const Change set{"a", "", "set", 1, left, moved};
    const Change planned{"a", "p", "plan", 1, left, moved};
    const Change undo{"b", "q", "undo", 1, moved, left, Fate::Done, "a"};
    expectUndo("as it was", {set}, "a", {left}, "1; " + problem + altered + "stored addresses.",
               "1; ? " + altered + "stored addresses.");
    expectUndo("twice", {set, {"b", "", "set", 1, moved, again}}, "b", {again}, "1 .31; ");
    expectUndo("changed since", {set, {"b", "", "name", 1, moved, renamed}}, "a", {renamed},
               "1 .21 nleft; " + problem + altered + "name.", "1 .21 nleft; ? " + altered + "name.");
    expectUndo("undone", {set, undo}, "a", {left}, "");
    expectUndo("an undo that failed", {set, {"b", "q", "undo", 1, moved, moved, Fate::Failed, "a"}}, "a", {moved},
               "1 .21; ");
    expectUndo("the undo undone", {set, undo, {"c", "r", "undo", 1, left, moved, Fate::Done, "q"}}, "a", {moved},
               "1 .21; ");
    expectUndo("undo of an undo", {set, undo}, "q", {left}, "1 .31; ");
    expectUndo("rolled back",
               {{"a", "p", "plan", 1, left, moved, Fate::RolledBack}, {"b", "p", "rollback", 1, moved, left}}, "p",
               {left}, "");
    expectUndo("died half-way", {{"a", "p", "plan", 1, dhcp, renamed, Fate::Open}}, "p", {home}, "1 w6; ");
    expectUndo("swap", {planned, {"b", "p", "plan", 2, moved, left}}, "p", {moved, left}, "1 .21; 2 .31; ");
    expectUndo("twice in a plan", {planned, {"b", "p", "plan", 1, moved, again}}, "p", {again}, "1 .21; ");
    expectUndo("a temporary address", {{"b", "p", "temporary", 1, left, again}, planned}, "p", {moved}, "1 .21; ");
    expectUndo("one forced", {{"a", "", "force", 1, left, left}}, "a", {left}, "");
    expectUndo("a mode whose address is unread", {{"a", "", "set", 1, unread, unreadDhcp}}, "a", {unreadDhcp},
               "1 w5 .99; " + problem + then, "1 w5 .99; ? " + then);
    expectUndo("DHCP keeps old addresses", {{"a", "", "set", 1, dhcp, plain}}, "a", {plain}, "1 w6 .21; ");
    expectUndo("DHCP without", {{"a", "", "set", 1, {Dhcp, 0, ""}, plain}}, "a", {plain},
               "1 w6; ? It had no static address stored, and none cannot be written: it keeps the new one.");
    expectUndo("DHCP, unread", {{"a", "", "set", 1, unreadDhcp, plain}}, "a", {plain},
               "1 w6; ? " + unknown + "it keeps the new one.");
    expectUndo("static, unread", {{"a", "", "set", 1, unread, plain}}, "a", {plain}, "1 .99; " + problem + then);
    expectUndo("only the name", {{"a", "", "name", 1, {Static, -1, "x"}, {Static, -1, "y"}}}, "a", {named}, "1 nx; ");
    expectUndo("static and DHCP", {{"a", "", "set", 1, {7, 21, ""}, plain}}, "a", {plain}, "1 w7 .21; ");
    expectUndo("no link-local", {{"a", "", "set", 1, {2, 21, ""}, home}}, "a", {home},
               "1 w6; " + problem + "It was set to use no link-local address, which cannot be restored.");
    expectUndo("pauses of another kind stay", {{"a", "", "set", 1, dhcp, home}}, "a", {{0x80000005, 21, ""}},
               "1 w2147483654; ");
    expectUndo("an unreadable name", {{"a", "", "name", 1, {Static, 21, "\uFFFD"}, named}}, "a", {named},
               "1; " + problem + "Its old name had bytes that are no UTF-8: it cannot be restored.");
    expectUndo("gone", {set}, "a", {}, problem + "There is no such camera now.", "? There is no such camera now.");
    expectUndo("unknown", {set}, "z", {moved}, "! The journal has no change and no plan 'z'.");
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
