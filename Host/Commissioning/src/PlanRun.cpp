#include "PlanRun.h"

#include "PlanRollback.h"
#include "PlanWriter.h"
#include "SideBySide.h"
#include "commissioning/AddressText.h"
#include "commissioning/DeviceInfos.h"

#include <map>

namespace commissioning {

using namespace Corvo;

namespace {

bool isRestarting(const PlanMember *member) {
    return !member->isOver && member->isSent && member->forward.isAddressing;
}

} // namespace

PlanRun::PlanRun(IGigETransportLayer &layer, PlanReading &reading, Journal *pJournal, const PlanOptions &options,
                 PlanOutcome *pOutcome)
    : m_Layer(layer), m_Reading(reading), m_pJournal(pJournal), m_Options(options), m_Outcome(*pOutcome),
      m_Loans(reading.inventory, reading.members) {}

void PlanRun::run() {
    PlanMembers rest;
    for (PlanMember &member : m_Reading.members)
        rest.push_back(&member);
    bool isFine = true;
    for (PlanMembers first = canaries(); isFine && !first.empty() && first.size() < rest.size(); first = canaries()) {
        isFine = carry(first);
        for (const PlanMember *const member : those(first, [](const PlanMember *each) { return each->isSent; }))
            m_Tried.insert(member->forward.change.adapter);
        refuseTaken();
        rest = those(rest, [](const PlanMember *member) { return !member->isOver; });
    }
    if (isFine)
        carry(rest);
    const std::string reason = obstacle(); // a stop is told as such
    for (PlanMember *const member : rest) {
        if (!isFine)
            refuse(*member, reason.empty() ? "It was not begun, as the first camera of an adapter failed." : reason);
    }
}

PlanMembers PlanRun::canaries() {
    std::vector<Place> places;
    std::map<std::string, std::vector<std::size_t>> byAdapter;
    if (!obstacle().empty())
        return {};
    for (const PlanMember &member : m_Reading.members) {
        const std::string &adapter = member.forward.change.adapter;
        if (member.forward.isAddressing && !member.isOver && m_Tried.count(adapter) == 0)
            byAdapter[adapter].push_back(places.size());
        places.push_back(member.isOver ? Place() : member.place);
    }
    PlanMembers found;
    for (const auto &[adapter, members] : byAdapter) {
        const auto one = freest(places, members);
        if (one)
            found.push_back(&m_Reading.members[*one]);
        else if (m_Tried.insert(adapter).second)
            append(&m_Outcome.remark, "No camera behind " + (adapter.empty() ? "an unknown adapter" : adapter) +
                                          " could go first alone, as all of them exchange their addresses.");
    }
    return found;
}

bool PlanRun::carry(const PlanMembers &group) {
    writeAll(group);
    putBack(heldBack(group));
    verify(those(group, isRestarting));
    end(group);
    return std::all_of(group.begin(), group.end(),
                       [](const PlanMember *member) { return member->forward.isDone || !member->isSent; });
}

void PlanRun::refuseTaken() {
    std::vector<Place> places;
    std::vector<bool> keeps;
    for (const PlanMember &member : m_Reading.members) {
        places.push_back(member.place);
        keeps.push_back(member.isOver && !member.isSent);
    }
    const std::vector<bool> stays = entangled(places, keeps);
    for (std::size_t i = 0; i < places.size(); ++i) {
        PlanMember &member = m_Reading.members[i];
        if (stays[i] && !member.isOver)
            refuse(member, takenText(member));
    }
}

bool PlanRun::isFull() const { return m_Options.maxFailures != 0 && m_Failures >= m_Options.maxFailures; }

std::string PlanRun::obstacle() const {
    if (m_Options.isStopRequested && m_Options.isStopRequested())
        return "It was not begun, as a stop was requested.";
    return isFull() ? "It was not begun, as too many cameras failed." : "";
}

void PlanRun::refuse(PlanMember &member, const std::string &reason) {
    member.record->result = Result::refusal(reason);
    endMember(&member, PlanState::NotBegun);
}

bool PlanRun::begin(PlanMember &member) {
    if (const std::string reason = obstacle(); !reason.empty()) {
        refuse(member, reason);
        return false;
    }
    JournalEntry entry;
    entry.plan = m_Outcome.id;
    entry.file = m_Options.file;
    entry.undoes = m_Options.undoes;
    entry.what = m_Options.what;
    entry.mac = member.before.mac;
    entry.before = snapshotOf(member.before);
    entry.wanted = member.record->change.after;
    try {
        member.undertaking = std::make_unique<Undertaking>(m_pJournal, entry);
    } catch (const std::exception &error) { // in somebody else's hands, or the journal cannot be written
        refuse(member, error.what());
        ++m_Failures;
        return false;
    }
    for (PlanTask *const task : {&member.forward, &member.back}) {
        task->journal = m_pJournal;
        task->undertaking = member.undertaking.get();
    }
    member.isSent = true;
    return true;
}

void PlanRun::writeOne(PlanMember &member) {
    if (!begin(member))
        return;
    write(m_Layer, &member.forward);
    const bool mayBeLent = !member.forward.isReadable && m_Loans.canLend(member.forward.change.adapter);
    if (!member.forward.isWritten && !mayBeLent)
        ++m_Failures;
}

void PlanRun::writeAll(const PlanMembers &group) {
    std::atomic<std::size_t> done{0};
    sideBySide(group.size(), m_Options.atOnce, [&](std::size_t i) {
        writeOne(*group[i]);
        report(PlanPhase::Writing, ++done, group.size());
    });
    lend(those(group, [&](const PlanMember *member) {
        return member->isSent && !member->forward.isWritten && !member->forward.isReadable &&
               m_Loans.canLend(member->forward.change.adapter);
    }));
}

void PlanRun::lend(const PlanMembers &group) {
    std::vector<PlanTask *> tasks;
    for (PlanMember *const member : group)
        tasks.push_back(&member->forward);
    writeOverLoans(m_Layer, m_Loans, tasks, m_Options.atOnce);
    for (const PlanTask *const task : tasks)
        m_Failures += task->isWritten ? 0 : 1;
}

PlanMembers PlanRun::heldBack(const PlanMembers &group) const {
    std::vector<Place> places;
    std::vector<bool> keeps;
    for (const PlanMember *const member : group) {
        places.push_back(member->place);
        keeps.push_back(!member->forward.isWritten || isFull());
    }
    const std::vector<bool> stays = entangled(places, keeps);
    PlanMembers held;
    for (std::size_t i = 0; i < group.size(); ++i) {
        if (stays[i] && isRestarting(group[i]))
            held.push_back(group[i]);
    }
    return held;
}

void PlanRun::putBack(const PlanMembers &held) {
    std::atomic<std::size_t> done{0};
    sideBySide(held.size(), m_Options.atOnce, [&](std::size_t i) {
        PlanMember &member = *held[i];
        member.back.temporary = member.forward.temporary;
        member.back = whereLent(member.back);
        member.back.temporary.reset(); // it has it already
        member.back.isWritten = isStored(member.back).value_or(false);
        if (!member.back.isWritten)
            write(m_Layer, &member.back);
        report(PlanPhase::RollingBack, ++done, held.size());
    });
    for (PlanMember *const member : held)
        tellPutBack(*member);
}

void PlanRun::tellPutBack(PlanMember &member) {
    Result &result = member.record->result;
    result = member.forward.result;
    result.success = false;
    if (member.forward.isWritten)
        result.text = isFull() ? "It was not restarted, as too many cameras failed."
                               : "It was not restarted, as a camera that failed keeps the address " +
                                     toText(member.place.gets) + ".";
    const bool isSeen = isStored(member.back).value_or(false);
    append(&result.text, isSeen                  ? "It has its old settings stored."
                         : member.back.isWritten ? "Its old settings were sent again, but cannot be read."
                                                 : "Its old settings could not be written back.");
    append(&result.text, member.lasting);
    result.now = member.forward.change.device;
    result.stored = isSeen ? member.before.stored : std::nullopt;
    if (isSeen && member.forward.temporary) // back to its own address
        returnLoan(member);
    else
        append(&result.text, lentText(member.forward));
    endMember(&member, isSeen ? PlanState::RolledBack : PlanState::Unconfirmed);
}

void PlanRun::returnLoan(PlanMember &member) {
    PlanVerifier verifier(m_Layer, m_Options.patience, m_Options.atOnce, [](std::size_t, std::size_t) {});
    verifier.restart({&member.back});
    verifier.await({&member.back});
    if (member.back.result.now)
        member.record->result.now = member.back.result.now;
    if (!member.back.isDone)
        append(&member.record->result.text, lentText(member.forward));
}

void PlanRun::verify(const PlanMembers &group) {
    std::vector<PlanTask *> tasks;
    for (PlanMember *const member : group) {
        tasks.push_back(&member->forward);
        member->isRestarted = true;
    }
    PlanVerifier verifier(m_Layer, m_Options.patience, m_Options.atOnce,
                          [&](std::size_t done, std::size_t all) { report(m_Phase, done, all); });
    verifier.restart(tasks);
    report(PlanPhase::Restarting, tasks.size(), tasks.size());
    verifier.await(tasks);
    const PlanMembers lost = those(group, [](const PlanMember *member) { return !member->forward.isDone; });
    m_Failures += static_cast<unsigned>(lost.size());
    if (!m_Options.rollsBack || std::none_of(lost.begin(), lost.end(), isLost))
        return;
    m_Phase = PlanPhase::RollingBack;
    PlanRollback(m_Layer, m_Loans, verifier, m_Options.atOnce).run(group);
    m_Phase = PlanPhase::Verifying;
}

void PlanRun::end(const PlanMembers &group) {
    for (PlanMember *const member : those(group, [](const PlanMember *each) { return !each->isOver; })) {
        Result &result = member->record->result;
        result = member->forward.result;
        if (!result.success)
            append(&result.text, member->lasting);
        m_Failures += member->forward.isDone && !result.success ? 1 : 0;
        endMember(member, result.success ? PlanState::Done : result.now ? PlanState::Failed : PlanState::Unconfirmed);
    }
}

void PlanRun::report(PlanPhase phase, std::size_t done, std::size_t all) {
    const std::lock_guard<std::mutex> lock(m_Reporting);
    if (m_Options.progress)
        m_Options.progress(phase, done, all);
}

} // namespace commissioning
