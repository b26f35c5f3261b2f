#include "Undertake.h"

#include "Base/GCException.h"
#include "Registers.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Rediscovery.h"
#include "commissioning/Search.h"
#include "commissioning/Undertaking.h"

#include <cstring>
#include <optional>
#include <stdexcept>

namespace commissioning {

using namespace Corvo;

namespace {

/// What the camera has now: what is known of it may be hours old, and somebody may have changed it since.
Snapshot presentOf(const Context &context, const CQuorelGigEDeviceInfo &device) {
    const Camera known = cameraOf(device);
    const auto indication = context.interaction.begin(Step::Look);
    try {
        const auto found = lookFor(context, known.mac, known.address);
        if (!found)
            return snapshotOf(known);
        Camera now = cameraOf(*found);
        now.stored = Registers{*found}.readStored();
        if (!now.stored)
            now.stored = known.stored;
        return snapshotOf(now);
    } catch (const GenICam::GenericException &) { // the operation will meet the same
        return snapshotOf(known);
    }
}

JournalEntry entryOf(const CQuorelGigEDeviceInfo &device, const char *what, const Settings &wanted) {
    JournalEntry entry;
    entry.mac = device.GetMacAddress().c_str();
    entry.what = what;
    entry.wanted = wanted;
    return entry;
}

} // namespace

Result undertake(const Context &context, const CQuorelGigEDeviceInfo &device, const char *what, const Settings &wanted,
                 const std::function<Result(const Context &)> &operation) {
    const bool isStep = context.undertaking != nullptr && std::strcmp(what, "temporary") != 0;
    if (!context.journal || isStep)
        return operation(context);
    std::optional<Undertaking> undertaking;
    try {
        undertaking.emplace(context.journal, entryOf(device, what, wanted), context.undertaking,
                            [&] { return presentOf(context, device); });
    } catch (const Cancelled &) {
        return Result::refusal("It was cancelled before anything was sent.");
    } catch (const std::runtime_error &error) {
        context.trace.warning("MAC=%s is left alone. %s", device.GetMacAddress().c_str(), error.what());
        return Result::refusal(error.what());
    }
    Context inner = context;
    inner.undertaking = &*undertaking;
    Result result = operation(inner);
    undertaking->end(fateOf(result), &result);
    return result;
}

} // namespace commissioning
