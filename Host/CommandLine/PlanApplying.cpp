#include "ExitCode.h"
#include "PlanCommands.h"
#include "PlanPage.h"
#include "commissioning/PlanApplication.h"

using namespace commissioning;

namespace commandline {

namespace {

ChangeState stateOf(PlanState state) {
    switch (state) {
    case PlanState::Unchanged:
        return ChangeState::Unchanged;
    case PlanState::Done:
        return ChangeState::Done;
    case PlanState::Failed:
        return ChangeState::Failed;
    case PlanState::RolledBack:
        return ChangeState::RolledBack;
    case PlanState::Unconfirmed:
        return ChangeState::Unconfirmed;
    case PlanState::NotBegun:
        break;
    }
    return ChangeState::NotBegun;
}

const char *textOf(PlanPhase phase) {
    switch (phase) {
    case PlanPhase::Reading:
        return "read again";
    case PlanPhase::Writing:
        return "written";
    case PlanPhase::Restarting:
        return "restarted";
    case PlanPhase::Verifying:
        return "verified";
    case PlanPhase::RollingBack:
        break;
    }
    return "rolled back";
}

ChangeRecord changeRecordOf(const PlanRecord &done) {
    ChangeRecord record = recordOf(done.change.camera, done.result, "");
    record.state = stateOf(done.state);
    record.line = done.change.line;
    if (record.state == ChangeState::Unchanged || record.state == ChangeState::NotBegun)
        record.after = record.before; // nobody has touched it
    if (!isFine(record.state) && record.error.empty())
        record.error = record.state == ChangeState::NotBegun ? "Nothing was sent to it." : "It is not as it should be.";
    return record;
}

void fill(const Arguments &arguments, Session &session, const Terminal &terminal, PlanOptions *pOptions) {
    pOptions->file = arguments.file == "-" ? "" : arguments.file;
    pOptions->maxFailures = arguments.maxFailures;
    pOptions->rollsBack = arguments.rollsBack;
    pOptions->patience = session.context().patience;
    pOptions->progress = [&terminal](PlanPhase phase, std::size_t done, std::size_t all) {
        terminal.progress(std::to_string(done) + " of " + std::to_string(all) + " cameras " + textOf(phase) + "...");
    };
    pOptions->isStopRequested = [&session] { return session.interruption().isRequested(); };
}

Outcome notAgreed(Outcome outcome) {
    for (ChangeRecord &record : outcome.changes) {
        record.changed = false;
        record.after = record.before;
        if (record.state == ChangeState::WouldChange)
            record.state = ChangeState::NotBegun;
    }
    outcome.exitCode = ExitRefused;
    outcome.error = Terminal::disagreement();
    return outcome;
}

Outcome applied(PlanOutcome done, PlanReport plan) {
    Outcome outcome;
    plan.id = done.id;
    outcome.plan = std::move(plan);
    for (const PlanRecord &record : done.records)
        outcome.changes.push_back(changeRecordOf(record));
    outcome.exitCode = done.error.empty() ? exitCodeOf(outcome.changes) : ExitFailed;
    if (done.id.empty() && outcome.exitCode != ExitDone) // nothing was sent
        outcome.exitCode = ExitRefused;
    outcome.error = std::move(done.error);
    return outcome;
}

} // namespace

Outcome applyPlan(const CheckedPlan &check, PlanOptions options, const Arguments &arguments, Session &session,
                  const Terminal &terminal) {
    if (arguments.dryRun || check.outcome.exitCode != ExitWouldChange)
        return check.outcome;
    if (!arguments.yes) {
        const std::string question = planTable(check.outcome.changes, terminal.width()) + "Change these cameras?";
        if (!terminal.confirms(question, [&] { return session.interruption().isRequested(); }))
            return notAgreed(check.outcome);
    }
    fill(arguments, session, terminal, &options);
    PlanOutcome done = apply(session.layer(), check.review, check.inventory, session.context().journal, options);
    if (!done.remark.empty())
        terminal.note(done.remark);
    return applied(std::move(done), *check.outcome.plan);
}

} // namespace commandline
