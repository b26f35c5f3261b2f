#pragma once

#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"
#include "commissioning/Context.h"

#include <optional>
#include <string>

namespace commissioning {

/// The camera with a MAC, compared without regard to case, in one discovery. \param alsoAt an address that it may have,
/// asked by unicast when the discovery does not hear it; 0 for none.
std::optional<Corvo::CQuorelGigEDeviceInfo> lookFor(const Context &context, const std::string &mac, Address alsoAt = 0);

/// Waits until a camera that has been restarted answers a discovery. \returns none when it does not come back.
/// \param alsoAt as above.
std::optional<Corvo::CQuorelGigEDeviceInfo> waitForDevice(const Context &context, const std::string &mac,
                                                          Address alsoAt = 0);

/// Takes over what a discovery told of a camera into the list of what is known.
/// \param testAgain asks the camera whether it can be opened.
void follow(const Context &context, const Corvo::CQuorelGigEDeviceInfo &found, bool testAgain);

} // namespace commissioning
