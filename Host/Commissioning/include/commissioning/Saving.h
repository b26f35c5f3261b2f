#pragma once

#include "commissioning/Change.h"
#include "commissioning/Context.h"
#include "commissioning/Result.h"

namespace commissioning {

/// One save of one camera's IP configuration: by the vendor command, which works by MAC whatever the camera's address
/// is, else over a connection to it. Then the camera restarts its IP configuration and is waited for.
///
/// A save has succeeded when the camera that is back has what was asked for. Blocks for as long as that takes, a minute
/// and more; never throws for what a camera or the network does.
class Saving {
public:
    /// Both must outlive it.
    Saving(const Context &context, const Change &change) : m_Context(context), m_Change(change) {}

    /// Broadcast, and unicast when that did nothing; after a failure it finds out what has become of the camera.
    const Result &run();

    // The two ways, each on its own. \returns whether the camera has what was asked for.
    bool broadcast();
    bool unicast();

private:
    bool sendBroadcast();
    bool sendUnicast();
    /// \returns whether the camera came back at all.
    bool restartAndAwait();
    Address expectedAddress() const;
    /// Of the camera that is back.
    bool verify();
    void readBack();
    void inspect();

    const Context &m_Context;
    const Change &m_Change;
    Result m_Result;
};

/// The vendor command carries a name field that is left empty, which some cameras take for a name: writes it back.
/// \param before the camera as it was. \param pResult of the camera that is back; told when the name is lost.
void keepName(const Context &context, const Corvo::CQuorelGigEDeviceInfo &before, Result *pResult);

/// The save as a whole.
Result configure(const Context &context, const Change &change);

} // namespace commissioning
