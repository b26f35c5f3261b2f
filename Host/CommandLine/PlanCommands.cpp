#include "PlanCommands.h"

#include "ExitCode.h"
#include "FileReading.h"
#include "FileWriting.h"
#include "Text.h"

#include <algorithm>
#include <stdexcept>
#include <system_error>

using namespace commissioning;

namespace commandline {

namespace {

constexpr const char *Standard = "-"; // input or output
constexpr mode_t Readable = 0644;

std::string textOfFile(const std::string &file) {
    try {
        return file == Standard ? readInput(MaxPlanBytes + 1) : readFile(file, MaxPlanBytes + 1);
    } catch (const std::system_error &error) {
        const bool isFile = error.code() != std::errc::invalid_argument;
        throw std::invalid_argument(
            file + " cannot be read: " + (isFile ? error.code().message() : "it is no file (- is for standard input)") +
            ".");
    }
}

ChangeRecord changeRecordOf(const PlannedChange &change, ChangeState differing) {
    ChangeRecord record;
    record.mac = change.camera.mac;
    record.before = settingsOf(change.camera);
    record.after = change.after;
    record.changed = change.differs() && differing == ChangeState::WouldChange;
    record.state = change.differs() ? differing : ChangeState::Unchanged;
    record.line = change.line;
    return record;
}

void refuseElsewhere(const Inventory &considered, PlanReview *pReview) {
    for (const PlannedChange &change : pReview->changes) {
        const auto isIt = [&](const Camera &camera) { return camera.mac == change.camera.mac; };
        if (std::none_of(considered.cameras.begin(), considered.cameras.end(), isIt))
            pReview->problems.push_back({change.line, 0, "The camera is behind another adapter."});
    }
}

Outcome outcomeOf(const PlanReview &review, const std::string &file) {
    Outcome outcome;
    outcome.plan = PlanReport{"", file, review.problems};
    for (const PlannedChange &change : review.changes)
        outcome.changes.push_back(
            changeRecordOf(change, review.isRefused() ? ChangeState::Refused : ChangeState::WouldChange));
    outcome.exitCode = review.isRefused() ? ExitRefused : review.wouldChange() ? ExitWouldChange : ExitDone;
    if (review.isRefused())
        outcome.error =
            "The plan is refused, nothing was sent. Its problems: " + std::to_string(review.problems.size());
    return outcome;
}

} // namespace

CheckedPlan checked(const Plan &plan, const std::string &file, Session &session) {
    CheckedPlan check;
    check.inventory = inventoryOf(session.diagnosis());
    check.review = review(plan, check.inventory);
    refuseElsewhere(session.inventory(), &check.review);
    if (!check.review.isRefused())
        check.review = review(plan, check.inventory, session.findTaken(check.review));
    check.outcome = outcomeOf(check.review, file);
    return check;
}

CheckedPlan checkedFile(const Arguments &arguments, Session &session) {
    return checked(readPlan(textOfFile(arguments.file)), arguments.file, session);
}

Outcome exportPlan(const Arguments &arguments, const Session &session, const Terminal &terminal) {
    const Plan plan = planOf(session.inventory());
    Outcome outcome;
    if (arguments.file.empty() || arguments.file == Standard) {
        outcome.text = planText(plan);
        return outcome;
    }
    outcome.plan = PlanReport{"", arguments.file, {}};
    try {
        writeFile(arguments.file, planText(plan), Readable,
                  arguments.replacesFile ? Existing::Replace : Existing::Refuse);
    } catch (const std::system_error &error) {
        if (error.code() != std::errc::file_exists)
            throw;
        outcome.exitCode = ExitRefused;
        outcome.error = arguments.file + " is there already. --force replaces it.";
        return outcome;
    }
    terminal.note(counted(plan.entries.size(), "camera") + " written to " + arguments.file + ".");
    return outcome;
}

} // namespace commandline
