#pragma once

#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"
#include "commissioning/Change.h"
#include "commissioning/Interaction.h"
#include "commissioning/Plan.h"
#include "commissioning/Result.h"

#include <chrono>
#include <optional>
#include <string>

namespace commissioning {

class Journal;
class Undertaking;

/// One change of one camera of a plan on its way: forward, or back to what it had. Worked on by one thread at a time.
struct PlanTask {
    Change change;                   ///< its device is the camera as it was heard last before it
    bool isAddressing = true;        ///< mode or addresses are written and the camera restarts
    std::optional<std::string> name; ///< that it is to have afterwards; none leaves that alone
    bool isReadable = false;         ///< it answers at its address, so what was written can be read
    bool isHeard = true;             ///< a search has found it; otherwise a broadcast is all that can be tried
    std::optional<TemporaryAddress> temporary; ///< one that may be forced to reach it

    Journal *journal = nullptr;
    const Undertaking *undertaking = nullptr; ///< what it is a part of

    Result result;
    bool isWritten = false;                          ///< all was read back, or acknowledged where it could not be read
    bool isDone = false;                             ///< seen to have what was asked for
    int restarts = 0;                                ///< sent so far
    bool isTwin = false;                             ///< another camera has its MAC
    std::chrono::steady_clock::time_point restarted; ///< when the last one was sent

    std::string mac() const { return change.device.GetMacAddress().c_str(); }
    /// Where it can be asked when no broadcast is heard; of the other modes nobody knows.
    Address expectedAddress() const { return change.mode == Mode::Static ? change.address : 0; }
};

/// The task with its camera where it can be read: at its temporary address, where it has been lent one.
PlanTask whereLent(const PlanTask &task);

/// A sentence on the temporary address that a camera was lent and has not been seen without since; empty for none.
std::string lentText(const PlanTask &task);

/// The change that gives a camera a word of modes and stored addresses, none of them to leave those alone.
Change changeOf(const Corvo::CQuorelGigEDeviceInfo &device, const std::string &adapter, std::uint32_t word,
                const std::optional<StoredAddresses> &stored);

} // namespace commissioning
