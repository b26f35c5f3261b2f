#include "PlanPage.h"

#include "Table.h"
#include "Text.h"
#include "commissioning/AddressText.h"
#include "commissioning/Words.h"

#include <algorithm>

using namespace commissioning;

namespace commandline {

namespace {

std::string orDash(const std::string &text) { return text.empty() ? "-" : text; }

std::string modeText(const Settings &settings) { return settings.mode ? toText(*settings.mode) : "-"; }

std::string subnetText(const Settings &settings) {
    return settings.address == 0 ? "-" : toText(AdapterAddress{settings.address, settings.mask});
}

std::string gatewayText(const Settings &settings) { return settings.gateway == 0 ? "-" : toText(settings.gateway); }

/// Nothing where they are the same.
std::string difference(const std::string &before, const std::string &after) {
    return before == after ? "" : before + " -> " + after;
}

Table::Row rowOf(const ChangeRecord &record) {
    const Settings &before = record.before;
    const std::string state = stateWord(record.state);
    if (!record.after)
        return {macText(record.mac), before.name, "?", subnetText(before) + " -> ?", "?", state};
    const Settings &after = *record.after;
    // One that has other addresses for now than those it has stored.
    const bool returns = record.state == ChangeState::WouldChange && before == after;
    return {macText(record.mac),
            before.name == after.name ? before.name : orDash(before.name) + " -> " + orDash(after.name),
            difference(modeText(before), modeText(after)),
            returns ? "back to " + subnetText(after) : difference(subnetText(before), subnetText(after)),
            difference(gatewayText(before), gatewayText(after)),
            state};
}

bool isUnchanged(const ChangeRecord &record) { return record.state == ChangeState::Unchanged; }

std::string problemText(const PlanReport &plan, const PlanProblem &problem) {
    std::string text = plan.file.empty() ? "" : plan.file + ":";
    for (const int number : {problem.line, problem.character})
        text += number == 0 ? "" : std::to_string(number) + ":";
    return harmless(text + (text.empty() ? "" : " ") + problem.text) + "\n";
}

} // namespace

std::string planTable(const std::vector<ChangeRecord> &records, int width) {
    Table table({"CAMERA", "NAME", "MODE", "ADDRESS", "GATEWAY", "STATE"}, {1});
    for (const ChangeRecord &record : records) {
        if (!isUnchanged(record))
            table.add(rowOf(record));
    }
    return std::all_of(records.begin(), records.end(), isUnchanged) ? "" : table.text(width);
}

std::string planPage(const Outcome &outcome, const Terminal &terminal) {
    std::string text = planTable(outcome.changes, terminal.width());
    for (const ChangeRecord &record : outcome.changes) {
        for (const std::string &more : {record.error, record.remark})
            text += more.empty() ? "" : macText(record.mac) + ": " + harmless(more) + "\n";
    }
    const auto unchanged = std::count_if(outcome.changes.begin(), outcome.changes.end(), isUnchanged);
    if (unchanged != 0)
        text += std::to_string(unchanged) + " of " + counted(outcome.changes.size(), "camera") +
                (unchanged == 1 ? " needs" : " need") + " no change.\n";
    const PlanReport plan = outcome.plan.value_or(PlanReport{});
    for (const PlanProblem &problem : plan.problems)
        text += problemText(plan, problem);
    return text.empty() && outcome.error.empty() ? "The plan names no camera.\n" : text;
}

Json planJson(const std::optional<PlanReport> &plan) {
    if (!plan)
        return nullptr;
    Json problems = Json::array();
    for (const PlanProblem &problem : plan->problems)
        problems.push_back({{"file", textOrNull(plan->file)},
                            {"line", numberOrNull(problem.line)},
                            {"character", numberOrNull(problem.character)},
                            {"text", problem.text}});
    return {{"id", textOrNull(plan->id)}, {"file", textOrNull(plan->file)}, {"problems", problems}};
}

} // namespace commandline
