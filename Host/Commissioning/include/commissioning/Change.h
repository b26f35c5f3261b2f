#pragma once

#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"
#include "commissioning/Inventory.h"

#include <cstdint>
#include <optional>
#include <string>

namespace commissioning {

/// One change of one camera: taken when it is decided and carried through unaltered, so that nothing which happens
/// meanwhile can turn it to another camera or to other values.
struct Change {
    Corvo::CQuorelGigEDeviceInfo device; ///< as it was known when the change was decided
    std::string adapter;                 ///< name of the adapter it is listed under; empty when under none
    std::optional<Mode> mode;            ///< wanted; none when the camera supports no mode
    std::optional<std::uint32_t> word;   ///< of modes (GEV_IP_CONFIG), where the mode alone does not tell which
    bool isStaticFirst = false; ///< stores the addresses although the mode is not static: as a static one first
    Address address = 0;        ///< wanted, also when they do not differ
    Address mask = 0;
    Address gateway = 0;
    bool modeDiffers = false; ///< from what the camera has stored, as far as that is known
    bool addressDiffers = false;
    bool maskDiffers = false;
    bool gatewayDiffers = false;

    bool hasAddressChanges() const { return addressDiffers || maskDiffers || gatewayDiffers; }
    /// With another mode than a static one a camera is sent none, unless they are to be put back.
    bool storesAddresses() const { return mode == Mode::Static || isStaticFirst; }
    StoredAddresses wanted() const { return {address, mask, gateway}; }
};

} // namespace commissioning
