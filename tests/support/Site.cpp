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

std::string Site::addressOf(unsigned number) const {
    const auto current = cameras.status(camera(number).mac).current;
    return current ? current->address.toString() : "";
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

camsim::CameraConfig cameraAt(unsigned number, const std::string &address, const std::string &settings) {
    camsim::CameraConfig config = camsim::parseCameras("enabled=persistent+lla,ip=" + address + settings)[0];
    config.mac = camera(number).mac;
    config.serial = camera(number).serial;
    return config;
}

} // namespace testnet
