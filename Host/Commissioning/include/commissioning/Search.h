#pragma once

#include "MinimalCorvo/Container.h"
#include "MinimalCorvoGigETL/IGigETransportLayer.h"
#include "commissioning/Inventory.h"

#include <cstddef>
#include <functional>
#include <stdexcept>
#include <vector>

namespace commissioning {

// Any thread may call; a list of infos is used by one thread at a time. All throw what the transport layer raises.

/// How a search is followed, and beyond whom it asks; all of it may be left out. What is called must not throw.
struct SearchOptions {
    /// Every answer to the discovery as soon as it is over, before the answers of a camera become one entry.
    std::function<void(const Corvo::DeviceInfoList &answers)> heard;
    /// The cameras, one entry each, before they are asked.
    std::function<void(const Corvo::DeviceInfoList &devices)> found;
    /// A camera with its verdict and what could be read. On several threads, one call at a time.
    std::function<void(const Corvo::CDeviceInfo &device)> judged;
    /// Fills in what is known of a camera from before; one for which it returns true is not asked. With it a search
    /// sends one discovery, without it two. See Recollection.
    std::function<bool(Corvo::CDeviceInfo &device)> recall;
    std::vector<Address> ask; ///< also asked by unicast, such as cameras behind a router
};

/// A search that was ended by the calling thread's stop token (Gx::CStopScope), within 100 ms of its request.
class Cancelled : public std::runtime_error {
public:
    Cancelled() : std::runtime_error("The search was cancelled.") {}
};

/// Every camera that answers on any adapter, one entry for each MAC, with the names of the adapters. Takes about 250
/// ms. \throws RuntimeException when the host lacks what a discovery needs; Cancelled.
Corvo::DeviceInfoList discover(Corvo::IGigETransportLayer &layer, const SearchOptions &options = {});

/// The same with verdicts and with what can be read without control: stored addresses and holder. All cameras are asked
/// side by side; it takes about half a second, and as much longer as one probe (0.6 s) when a camera does not answer.
Corvo::DeviceInfoList search(Corvo::IGigETransportLayer &layer, const SearchOptions &options = {});

/// Adds the camera at an address, if it answers within a second. A firewall that lets in only what was asked for lets
/// this answer in, unlike those to a broadcast. Never throws.
void ask(Address address, Corvo::DeviceInfoList &found);

/// Asks one camera whether it can be opened and stores the verdict in its info.
void testAccessibility(Corvo::IGigETransportLayer &layer, Corvo::CDeviceInfo &device);

/// The same, and stores what can be read without control: stored addresses and holder. Takes up to 1.2 s.
void probe(Corvo::IGigETransportLayer &layer, Corvo::CDeviceInfo &device);

/// Patches the entries of a camera without a discovery. A null text leaves its value alone.
/// \param ipConfig decimal number of the enabled modes (GEV_IP_CONFIG).
/// \param testAgain asks the camera again whether it can be opened. \returns number of entries patched.
std::size_t updateDeviceInfo(Corvo::IGigETransportLayer &layer, Corvo::DeviceInfoList &devices, const char *mac,
                             const char *ipConfig, const char *ipAddress, const char *subnetMask,
                             const char *defaultGateway, bool testAgain);

/// The cameras of a search as plain values.
Inventory inventoryOf(const Corvo::DeviceInfoList &devices);

} // namespace commissioning
