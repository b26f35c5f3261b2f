#include "JournalCommands.h"

#include "ExitCode.h"
#include "PlanCommands.h"
#include "Text.h"
#include "commissioning/AddressText.h"
#include "commissioning/Undo.h"

#include <algorithm>
#include <map>
#include <system_error>

using namespace commissioning;

namespace commandline {

namespace {

/// "3, 5-9"
std::string rangesText(const std::vector<std::size_t> &numbers) {
    std::string text;
    for (std::size_t first = 0, last = 0; first < numbers.size(); first = ++last) {
        while (last + 1 < numbers.size() && numbers[last + 1] == numbers[last] + 1)
            ++last;
        text += (text.empty() ? "" : ", ") + std::to_string(numbers[first]) +
                (last == first ? "" : "-" + std::to_string(numbers[last]));
    }
    return text;
}

/// For an undo, which misses what a line that cannot be read told of.
JournalContent read(Session &session, const Terminal &terminal) {
    const Journal &journal = *session.context().journal;
    JournalContent content = journal.read();
    if (!content.unreadable.empty())
        terminal.note(journal.path() + " has lines that cannot be read. \"lanvanectl plan log\" names them.");
    return content;
}

/// Cameras whose last change was begun and not ended.
std::vector<std::string> openCameras(const std::vector<JournalEntry> &entries) {
    std::map<std::string, Fate> last;
    for (const JournalEntry &entry : entries) {
        if (entry.what != "temporary")
            last[entry.mac] = entry.fate;
    }
    std::vector<std::string> open;
    for (const auto &[mac, fate] : last) {
        if (fate == Fate::Open)
            open.push_back(macText(mac));
    }
    return open;
}

void noteOpen(const std::vector<JournalEntry> &entries, const Terminal &terminal) {
    for (const std::string &camera : openCameras(entries))
        terminal.note(camera + ": its last change was begun, but its end is not in the journal: the program died, or " +
                      "it is still running. \"lanvanectl plan log\" shows it.");
}

/// What is not restored is told before anybody is asked; in JSON with the camera.
void tell(const std::vector<UndoLoss> &losses, const Arguments &arguments, const Terminal &terminal) {
    for (const UndoLoss &loss : losses) {
        if (!arguments.json)
            terminal.complain(macText(loss.mac) + ": " + harmless(loss.text));
    }
}

void addRemarks(const std::vector<UndoLoss> &losses, Outcome *pOutcome) {
    for (const UndoLoss &loss : losses) {
        for (ChangeRecord &record : pOutcome->changes) {
            if (record.mac == loss.mac)
                record.remark += (record.remark.empty() ? "" : " ") + loss.text;
        }
    }
}

Outcome nothing(const std::string &what) { return {ExitNotFound, {}, "The journal has no " + what + "."}; }

bool isKnown(const std::string &id, const std::vector<JournalEntry> &entries) {
    return std::any_of(entries.begin(), entries.end(),
                       [&](const JournalEntry &entry) { return entry.id == id || entry.plan == id; });
}

/// Whether a refused undo would change something, and nothing speaks against it, if it were forced.
bool helpsForce(const std::string &id, const std::vector<JournalEntry> &entries, Session &session) {
    const Undo forced = undoOf(id, entries, inventoryOf(session.diagnosis()), true);
    return checked(forced.plan, "", session).outcome.exitCode == ExitWouldChange;
}

Outcome undo(const std::string &id, const std::vector<JournalEntry> &entries, const Arguments &arguments,
             Session &session, const Terminal &terminal) {
    const Undo undo = undoOf(id, entries, inventoryOf(session.diagnosis()), arguments.isForced);
    const CheckedPlan check = checked(undo.plan, "", session);
    noteOpen(entries, terminal);
    tell(undo.losses, arguments, terminal);
    PlanOptions options;
    options.what = "undo";
    options.undoes = id;
    Outcome outcome = applyPlan(check, options, arguments, session, terminal);
    if (arguments.json)
        addRemarks(undo.losses, &outcome);
    if (undo.plan.entries.empty() && undo.plan.problems.empty())
        outcome.text = "There is nothing to undo.\n";
    if (check.review.isRefused() && !arguments.isForced && helpsForce(id, entries, session))
        outcome.error += ". --force undoes also what has changed since, as far as that can be done";
    return outcome;
}

} // namespace

Outcome undoLastChange(const Camera &camera, const Arguments &arguments, Session &session, const Terminal &terminal) {
    const JournalContent content = read(session, terminal);
    const std::string id = lastChangeOf(camera.mac, content.entries);
    if (id.empty())
        return nothing("change of the camera " + macText(camera.mac));
    return undo(id, content.entries, arguments, session, terminal);
}

Outcome undoPlan(const Arguments &arguments, Session &session, const Terminal &terminal) {
    const JournalContent content = read(session, terminal);
    const std::string id = arguments.undone.empty() ? lastPlanIn(content.entries) : arguments.undone;
    if (id.empty())
        return nothing("plan");
    if (!isKnown(id, content.entries))
        return nothing("change and no plan '" + harmless(id) + "'");
    return undo(id, content.entries, arguments, session, terminal);
}

Outcome showLog(Session &session, const Terminal &terminal) {
    Outcome outcome;
    const Journal &journal = *session.context().journal;
    outcome.log = journal.read();
    const auto &unreadable = outcome.log->unreadable;
    if (!unreadable.empty())
        terminal.complain(journal.path() + ": " + (unreadable.size() == 1 ? "line " : "lines ") +
                          rangesText(unreadable) + " cannot be read.");
    return outcome;
}

void noteOpenChanges(Session &session, const Terminal &terminal) {
    try {
        noteOpen(session.context().journal->read().entries, terminal);
    } catch (const std::system_error &) { // which the change itself will be refused for
    }
}

} // namespace commandline
