#include "PlanCommands.h"

#include "ExitCode.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <unistd.h>

using namespace commissioning;

namespace commandline {

namespace {

constexpr const char *Standard = "-"; // input or output

std::string lastError() { return std::error_code(errno, std::generic_category()).message(); }

/// Not more than a little beyond what a plan may have.
std::string textOf(std::istream &input) {
    std::string text;
    for (std::string piece(1U << 16U, '\0'); input && text.size() <= MaxPlanBytes;) {
        input.read(piece.data(), static_cast<std::streamsize>(piece.size()));
        text.append(piece, 0, static_cast<std::size_t>(input.gcount()));
    }
    return text;
}

std::string textOfFile(const std::string &file) {
    if (file == Standard)
        return textOf(std::cin);
    errno = 0;
    std::ifstream input(file, std::ios::binary);
    const std::string text = textOf(input);
    if (errno != 0 && !input.eof()) // a folder opens, and fails when it is read
        throw std::invalid_argument(file + " cannot be read: " + lastError() + ".");
    return text;
}

ChangeRecord recordOf(const PlannedChange &change, ChangeState differing) {
    ChangeRecord record;
    record.mac = change.camera.mac;
    record.before = settingsOf(change.camera);
    record.after = differing == ChangeState::WouldChange ? change.after : record.before;
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
            recordOf(change, review.isRefused() ? ChangeState::Refused : ChangeState::WouldChange));
    outcome.exitCode = review.isRefused() ? ExitRefused : review.wouldChange() ? ExitWouldChange : ExitDone;
    if (review.isRefused())
        outcome.error =
            "The plan is refused, nothing was sent. Its problems: " + std::to_string(review.problems.size());
    return outcome;
}

/// Under a name of its own until it is complete.
void write(const std::string &file, const std::string &text) {
    const std::string temporary = file + "." + std::to_string(getpid()) + ".tmp";
    errno = 0;
    std::ofstream output(temporary, std::ios::binary);
    output << text;
    output.close();
    if (!output || std::rename(temporary.c_str(), file.c_str()) != 0) {
        const std::string reason = lastError();
        unlink(temporary.c_str());
        throw std::runtime_error(file + " cannot be written: " + reason + ".");
    }
}

} // namespace

CheckedPlan checked(const Plan &plan, const std::string &file, const Session &session) {
    CheckedPlan check;
    check.inventory = session.everything();
    check.review = review(plan, check.inventory);
    refuseElsewhere(session.inventory(), &check.review);
    check.outcome = outcomeOf(check.review, file);
    return check;
}

Outcome checkPlan(const Arguments &arguments, const Session &session) {
    return checked(readPlan(textOfFile(arguments.file)), arguments.file, session).outcome;
}

Outcome exportPlan(const Arguments &arguments, const Session &session, const Terminal &terminal) {
    const Plan plan = planOf(session.inventory());
    Outcome outcome;
    if (arguments.file.empty() || arguments.file == Standard) {
        outcome.text = planText(plan);
        return outcome;
    }
    outcome.plan = PlanReport{"", arguments.file, {}};
    const auto status = std::filesystem::status(arguments.file);
    if (std::filesystem::exists(status) && !(arguments.replacesFile && std::filesystem::is_regular_file(status))) {
        outcome.exitCode = ExitRefused;
        outcome.error = arguments.file +
                        (arguments.replacesFile ? " is no regular file." : " is there already. --force replaces it.");
        return outcome;
    }
    const bool isThere = std::filesystem::exists(status);
    write(isThere ? std::filesystem::canonical(arguments.file).string() : arguments.file, planText(plan));
    terminal.note(std::to_string(plan.entries.size()) + " cameras written to " + arguments.file + ".");
    return outcome;
}

} // namespace commandline
