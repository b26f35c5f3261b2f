#include "commissioning/PlanApplication.h"

#include "PlanTask.h"
#include "PlanVerifier.h"
#include "PlanWriter.h"
#include "SideBySide.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Search.h"

namespace commissioning {

using namespace Corvo;

PlanOutcome apply(IGigETransportLayer &layer, const PlanReview &review, const Inventory &, Journal *,
                  const PlanOptions &options) {
    PlanOutcome outcome;
    std::vector<PlanTask> tasks;
    DeviceInfoList heard = search(layer);
    std::vector<std::size_t> places;
    for (const PlannedChange &planned : review.changes) {
        outcome.records.push_back({planned, planned.differs() ? PlanState::NotBegun : PlanState::Unchanged, {}});
        const CDeviceInfo *device = findByMac(heard, planned.camera.mac);
        if (!planned.differs())
            continue;
        if (!device) {
            outcome.records.back().result = Result::refusal("The camera does not answer any more.");
            continue;
        }
        PlanTask task;
        task.change = changeOf(*device, planned.adapter, planned.word, planned.stored);
        task.isAddressing = planned.addressing;
        if (planned.naming)
            task.name = planned.after.name;
        task.isReadable = cameraOf(*device).status == Status::Ok;
        tasks.push_back(task);
        places.push_back(outcome.records.size() - 1);
    }
    sideBySide(tasks.size(), options.atOnce, [&](std::size_t i) { write(layer, &tasks[i]); });
    std::vector<PlanTask *> written;
    for (PlanTask &task : tasks) {
        if (task.isWritten && task.isAddressing)
            written.push_back(&task);
    }
    PlanVerifier verifier(layer, options.patience, options.atOnce, [&](std::size_t done) {
        if (options.progress)
            options.progress(PlanPhase::Verifying, done, written.size());
    });
    verifier.restart(written);
    verifier.await(written);
    for (std::size_t i = 0; i < tasks.size(); ++i) {
        PlanRecord &record = outcome.records[places[i]];
        record.result = tasks[i].result;
        record.state = record.result.success ? PlanState::Done
                       : record.result.now   ? PlanState::Failed
                                             : PlanState::Unconfirmed;
    }
    return outcome;
}

} // namespace commissioning
