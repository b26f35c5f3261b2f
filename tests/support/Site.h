#pragma once

#include "camsim/Scene.h"
#include "camsim/Simulator.h"
#include "support/Namespace.h"
#include "support/ScriptedPeer.h"

#include <memory>
#include <string>
#include <vector>

namespace testnet {

/// One host adapter and the simulated cameras behind it.
class Site {
public:
    /// Starts the cameras; they answer when this returns. \param seed of their faults; 0 draws one.
    Site(const std::string &name, const std::string &address, const std::vector<camsim::CameraConfig> &configs,
         std::uint64_t seed = 0);

    /// Of a camera: "192.168.10.21", or empty while it has none.
    std::string addressOf(unsigned number) const;

    Adapter adapter;
    camsim::Simulator cameras;
};

/// One host adapter and behind it a peer that breaks the rules.
class ScriptedSite {
public:
    /// \param peerAddress "192.168.1.20/24"
    ScriptedSite(const std::string &name, const std::string &address, const std::string &peerAddress,
                 ScriptedPeer::Script script);

    Adapter adapter;
    std::unique_ptr<ScriptedPeer> peer;
};

/// A camera whose MAC ends in the number and whose serial number is the number.
camsim::CameraConfig camera(unsigned number);
/// The same with a description and a persistent address that is enabled.
/// \param address "192.168.1.20/24" \param settings what else to change, as in ",reachable=no,model=Twin"
camsim::CameraConfig cameraAt(unsigned number, const std::string &address, const std::string &settings = "");

} // namespace testnet
