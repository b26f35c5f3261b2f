#pragma once

#include "commissioning/Context.h"
#include "commissioning/Result.h"

#include <string>

namespace commissioning {

// Changes without any question. They refuse what cannot work, are verified at their end and never throw for what a
// camera or the network does.

/// Makes a camera obtain its address anew. Success when it came back.
Result restart(const Context &context, const Corvo::CQuorelGigEDeviceInfo &device);

/// Stores a user-defined name, by the feature DeviceUserID, else by register.
/// \param name at most 16 bytes of UTF-8; a longer one is refused.
Result rename(const Context &context, const Corvo::CQuorelGigEDeviceInfo &device, const std::string &name);

/// Forces a temporary address that has been decided on. \param device need not have been found; its MAC counts.
Result forceAddressTo(const Context &context, const Corvo::CQuorelGigEDeviceInfo &device,
                      const TemporaryAddress &address);

} // namespace commissioning
