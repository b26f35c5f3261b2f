#pragma once

#include "PlanLoans.h"
#include "PlanReading.h"
#include "PlanVerifier.h"

#include <atomic>
#include <mutex>
#include <set>
#include <string>

namespace commissioning {

/// A plan whose cameras have been read again, on its way through the phases.
class PlanRun {
public:
    /// All must outlive it.
    PlanRun(Corvo::IGigETransportLayer &layer, PlanReading &reading, Journal *pJournal, const PlanOptions &options,
            PlanOutcome *pOutcome);

    void run();

private:
    /// One of each adapter that has been tried by none yet.
    PlanMembers canaries();
    /// All phases, with some of the cameras. \returns whether all that something was sent to are back as they should
    /// be.
    bool carry(const PlanMembers &group);
    /// Whoever was refused keeps its address, and whoever was to get that one keeps its own.
    void refuseTaken();

    void writeAll(const PlanMembers &group);
    void writeOne(PlanMember &member);
    bool begin(PlanMember &member);
    void lend(const PlanMembers &group);
    std::string obstacle() const;

    /// Those that must not restart, though they may have been written.
    PlanMembers heldBack(const PlanMembers &group) const;
    void putBack(const PlanMembers &held);
    void tellPutBack(PlanMember &member);
    void returnLoan(PlanMember &member);
    void verify(const PlanMembers &group);
    void end(const PlanMembers &group);

    void report(PlanPhase phase, std::size_t done, std::size_t all);
    void refuse(PlanMember &member, const std::string &reason);
    bool isFull() const;

    Corvo::IGigETransportLayer &m_Layer;
    PlanReading &m_Reading;
    Journal *m_pJournal;
    const PlanOptions &m_Options;
    PlanOutcome &m_Outcome;
    PlanLoans m_Loans;
    PlanPhase m_Phase = PlanPhase::Verifying; ///< what the verifier works for
    std::set<std::string> m_Tried;            ///< adapters one camera of which went first, or which have none that can
    std::atomic<unsigned> m_Failures{0};
    std::mutex m_Reporting;
};

} // namespace commissioning
