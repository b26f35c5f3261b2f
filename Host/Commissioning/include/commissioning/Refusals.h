#pragma once

#include "MinimalCorvo/Container.h"
#include "commissioning/Change.h"
#include "commissioning/Inventory.h"

#include <map>
#include <string>
#include <vector>

namespace commissioning {

/// What an address is judged by.
struct AddressSurroundings {
    std::vector<AdapterAddress> own;                ///< every address of this host
    std::vector<AdapterAddress> adapter;            ///< those of the adapter the camera is behind; empty when unknown
    const Corvo::DeviceInfoList *devices = nullptr; ///< all known cameras; may be null
    std::string adapterName;                        ///< of that adapter, to be told; may be empty
    std::vector<Camera> hidden; ///< cameras that are not among the devices, such as those only the listener saw
    bool allowsForeignSubnet = false;
};

/// Of a camera behind an adapter, null when that is not known; without the other cameras.
AddressSurroundings surroundingsOn(const std::vector<Adapter> &host, const Adapter *adapter);

// Each gives the reason, as a sentence for people, or an empty text when nothing speaks against it.

/// A camera that somebody else controls, who is named when that is known.
std::string refusalOfHolder(const Camera &camera);
std::string refusalOfHolder(const Corvo::CDeviceInfo &device);

/// A mode that a camera lacks. One that tells no mode at all may have any.
std::string refusalOfMode(const Camera &camera, Mode mode);
std::string refusalOfMode(const Corvo::CDeviceInfo &device, Mode mode);

/// Whether a finding says that several cameras have the same MAC.
bool tellsOfTwin(const Finding &finding);
/// A camera whose MAC another one has as well, as the findings of the search tell.
std::string refusalOfTwin(const std::string &mac, const std::vector<Finding> &findings);

/// A gateway, none being 0, that a camera with this address could not use.
std::string refusalOfGateway(Address gateway, Address address, Address mask);

/// An address that would lose the camera or somebody else: of no use for a camera, this host's, the network's or the
/// broadcast address, another camera's, or outside the adapter's subnets. A mask of 0, too.
/// \param mac of the camera that is to get it.
std::string refusalOfAddress(Address address, Address mask, const std::string &mac, const AddressSurroundings &around);

/// An address at which somebody else answers. \param mac of the camera that is to get it. \param taken as findTaken
/// tells it.
std::string refusalByOthers(Address address, const std::string &mac, const std::map<Address, std::string> &taken);

/// A change that cannot work: a camera somebody holds, a mode it lacks, an address as above.
std::string refusalOf(const Change &change, const AddressSurroundings &around);

} // namespace commissioning
