#pragma once

#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"
#include "commissioning/Context.h"
#include "commissioning/Result.h"
#include "commissioning/Settings.h"

#include <optional>
#include <string>

namespace commissioning {

struct ForceRequest {
    std::optional<Corvo::CQuorelGigEDeviceInfo> device; ///< none when its MAC is to be entered
    std::string adapter;                                ///< name of the one it is behind; may be empty
    std::string text;                                   ///< of the question; empty when a change needs a connection
    bool asksForMac = false;
};

/// Asks for a temporary address and forces it, until that succeeds or the user cancels.
/// \param pForced if not null, receives the address. \returns whether the camera was forced and came back.
bool forceAddress(const Context &context, const ForceRequest &request, Address *pForced);

/// What a camera is to have with a temporary address, for the journal.
Settings settingsAt(const Corvo::CQuorelGigEDeviceInfo &device, const TemporaryAddress &address);

/// Forces a temporary address, by MAC, without asking. A missing acknowledge is not believed before a search has shown
/// that the camera does not have the address: one outside the adapter's subnet, or behind a firewall, is not heard.
/// \throws RuntimeException when the camera does not have it.
void sendForcedAddress(const Context &context, const TemporaryAddress &address);

} // namespace commissioning
