#include "support/Site.h"

namespace testnet {

namespace {

camsim::SimulatorOptions behind(const Adapter &adapter, std::uint64_t seed) {
    camsim::SimulatorOptions options;
    options.interface = Adapter::CameraInterface;
    options.mode = camsim::AddressMode::Managed;
    options.networkNamespace = adapter.cameraSide().descriptor();
    options.seed = seed;
    return options;
}

} // namespace

Site::Site(const std::string &name, const std::string &address, const std::vector<camsim::CameraConfig> &configs,
           std::uint64_t seed)
    : adapter(name, address), cameras(behind(adapter, seed)) {
    cameras.addCameras(configs);
    cameras.start();
}

ScriptedSite::ScriptedSite(const std::string &name, const std::string &address, const std::string &peerAddress,
                           ScriptedPeer::Script script)
    : adapter(name, address) {
    adapter.cameraSide().ip("address add " + peerAddress + " brd + dev " + Adapter::CameraInterface);
    peer = std::make_unique<ScriptedPeer>(std::move(script), adapter.cameraSide());
}

camsim::CameraConfig camera(unsigned number) {
    camsim::CameraConfig config;
    config.mac = camsim::MacAddress::fromNumber(0x025AE3000000 + number);
    config.serial = std::to_string(number);
    return config;
}

camsim::IpSettings settings(const std::string &address) {
    const std::size_t slash = address.find('/');
    camsim::IpSettings result;
    result.address = camsim::Ipv4::parse(address.substr(0, slash));
    result.mask = camsim::Ipv4::maskOf(static_cast<unsigned>(std::stoul(address.substr(slash + 1))));
    return result;
}

camsim::CameraConfig cameraAt(unsigned number, const std::string &address) {
    camsim::CameraConfig config = camera(number);
    config.persistent = settings(address);
    config.ipEnabled = GEV_IP_CONFIG_PERSISTENT_IP | GEV_IP_CONFIG_LLA;
    return config;
}

} // namespace testnet
