#include "commissioning/PlanApplication.h"

#include "PlanRun.h"
#include "commissioning/Search.h"
#include "gxapi/StopToken.h"

#include <algorithm>

namespace commissioning {

PlanOutcome apply(Corvo::IGigETransportLayer &layer, const PlanReview &review, const Inventory &inventory,
                  Journal *pJournal, const PlanOptions &options) {
    const Gx::CStopScope shield(nullptr); // a datagram that is not sent because of a stop would leave half a plan
    PlanOutcome outcome;
    if (review.isRefused()) {
        outcome.error = "A plan with problems is not applied.";
        return outcome;
    }
    outcome.id = newJournalId();
    const auto report = [&](std::size_t done) {
        if (options.progress)
            options.progress(PlanPhase::Reading, done, review.changes.size());
    };
    try {
        report(0);
        PlanReading reading = readAgain(layer, review, inventory, options, &outcome);
        report(review.changes.size());
        PlanRun(layer, reading, pJournal, options, &outcome).run();
        const auto isSent = [](const PlanMember &member) { return member.isSent; };
        if (!pJournal || std::none_of(reading.members.begin(), reading.members.end(), isSent))
            outcome.id.clear();
    } catch (const std::exception &error) {
        outcome.error = error.what();
    }
    return outcome;
}

} // namespace commissioning
