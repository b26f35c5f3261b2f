#pragma once

#include "MinimalCorvo/Types.h"
#include "MinimalCorvoGigETL/ICorvoDevice.h"

namespace Corvo {

/// A GigE Vision camera.
///
/// The operations below need an open device with Control or Exclusive among its access modes, else they throw
/// LogicalErrorException; what the device refuses or does not answer gives RuntimeException. They go by the features of
/// the device where those can be written and else by its bootstrap registers.
class ICorvoGigEDevice : public ICorvoDevice {
public:
    /// Stores how the device gets its address at its next restart; link-local addressing is always enabled. A mode that
    /// the device does not support, by its info, is left out.
    virtual void ChangeIpConfiguration(bool persistent, bool dhcp) = 0;
    /// The stored persistent settings as dotted quads.
    virtual void GetPersistentIpAddress(String_t &ip, String_t &mask, String_t &gateway) = 0;
    /// Stores the persistent settings, which count from the next restart on when persistent IP is enabled.
    /// \throws RuntimeException also for a text that is no dotted quad; nothing is stored then. When the device refuses
    /// one of the three, the others are put back.
    virtual void SetPersistentIpAddress(const String_t &ip, const String_t &mask, const String_t &gateway) = 0;
};

} // namespace Corvo
