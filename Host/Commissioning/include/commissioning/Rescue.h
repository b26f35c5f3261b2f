#pragma once

#include "commissioning/Context.h"
#include "commissioning/Neighbourhood.h"
#include "commissioning/Refusals.h"
#include "commissioning/Result.h"

#include <optional>

namespace commissioning {

/// How a camera that cannot be used becomes usable.
struct RescuePlan {
    Corvo::CQuorelGigEDeviceInfo device; ///< as it was found; its MAC counts
    std::string adapter;                 ///< name of the one it is behind
    Address address = 0;                 ///< free or its own, in one of the adapter's subnets
    Address mask = 0;                    ///< the adapter's
    Mode mode = Mode::Static;            ///< how it gets its address from then on
};

/// Whether a camera cannot be used where it is, as the findings tell, and nobody holds it.
bool needsRescue(const Camera &camera, const Inventory &inventory);

/// The subnet of its adapter in which a camera can keep its address, as only its mask keeps it from being used. Looks
/// by ARP who else has the address, see neighbourhoodOf.
///
/// \param pKnown gets who else has it. \throws std::system_error
std::optional<AdapterAddress> subnetToStayIn(const Camera &camera, const Adapter &adapter,
                                             const AddressSurroundings &around, Neighbourhood *pKnown,
                                             const std::function<bool()> &isCancelled);

/// Why a camera cannot be rescued so: somebody holds it, it lacks the mode, or the address is of no use for it. Empty
/// when nothing speaks against it.
std::string refusalOf(const RescuePlan &plan, const AddressSurroundings &around);

/// Forces the address, stores what is wanted and verifies it. What is stored is written even where nobody could tell
/// that the camera took the forced address: a firewall may hide every answer of it. Never throws for what a camera or
/// the network does.
Result rescue(const Context &context, const RescuePlan &plan, const AddressSurroundings &around);

} // namespace commissioning
