#include "Observing.h"

using namespace commissioning;
using Corvo::CQuorelGigEDeviceInfo;

namespace {

Address number(const Corvo::String_t &text) { return camsim::Ipv4::parse(text.c_str()).value; }

std::optional<Mode> modeOf(const std::string &enabled) {
    const unsigned long bits = enabled.empty() ? 0 : std::stoul(enabled, nullptr, 0);
    if ((bits & GEV_IP_CONFIG_PERSISTENT_IP) != 0)
        return Mode::Static;
    return (bits & GEV_IP_CONFIG_DHCP) != 0 ? Mode::Dhcp : Mode::Auto;
}

} // namespace

Camera Observing::cameraOf(const CQuorelGigEDeviceInfo &device, const Observation &host) {
    Camera camera;
    camera.mac = device.GetMacAddress();
    camera.serial = device.GetSerialNumber();
    camera.address = number(device.GetIpAddress());
    camera.mask = number(device.GetSubnetMask());
    camera.gateway = number(device.GetDefaultGateway());
    camera.mode = modeOf(device.GetIpConfigCurrent().c_str());
    for (const Adapter &adapter : host.adapters) {
        for (const AdapterAddress &own : adapter.addresses) {
            if (own.address == number(device.GetInterface()))
                camera.adapters.push_back(adapter.name);
        }
    }
    return camera;
}

Observing::Observation Observing::observe(bool isPatient, const std::string &listener) {
    Observation result;
    result.adapters = surveyAdapters();
    for (const Adapter &adapter : result.adapters) {
        if (isUsable(adapter))
            result.searched.insert(adapter.name);
    }
    ListenerClient client({result.searched.begin(), result.searched.end()}, listener.empty() ? "/none" : listener);
    client.waitUntilReady(std::chrono::seconds(5)); // sanitizers take their time to start a program
    if (isPatient) {
        const Counters before = readCounters();
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        result.quiet = readCounters() - before;
    }
    const Counters before = readCounters();
    const std::uint64_t dropped = Gx::Enumerator::DroppedDatagrams();
    Corvo::DeviceInfoList devices;
    layer().EnumerateAllDevices(devices);
    result.during = readCounters() - before;
    result.overrun = Gx::Enumerator::DroppedDatagrams() - dropped;
    const auto end = std::chrono::steady_clock::now();
    for (Corvo::CDeviceInfo &device : devices) {
        Camera camera = cameraOf(CQuorelGigEDeviceInfo(device), result);
        result.answers.push_back({camera.mac, camera.address, "", "", camera.serial});
        Corvo::EDeviceAccessiblityInfo verdict = Corvo::Accessibility_Unknown;
        layer().IsDeviceAccessible(device, Corvo::AccessModeSet(Corvo::Control), &verdict);
        if (verdict == Corvo::Accessibility_NotReachable)
            camera.status = Status::NotReachable;
        else if (verdict != Corvo::Accessibility_Unknown)
            camera.status = verdict == Corvo::Accessibility_Ok ? Status::Ok : Status::InUse;
        const auto isKnown = [&](const Camera &known) { return known.mac == camera.mac; };
        if (std::any_of(result.cameras.begin(), result.cameras.end(), isKnown))
            continue;
        for (const testnet::Site *site : sites) {
            const auto status = site->cameras.status(camsim::MacAddress::parse(camera.mac));
            camera.stored = StoredAddresses{status.persistent.address.value, 0, 0};
        }
        result.cameras.push_back(camera);
    }
    result.listener = client.finish();
    for (const Camera &hidden : hiddenCameras(result.listener, result.cameras, end))
        result.cameras.push_back(hidden);
    completeFromHost(result);
    return result;
}

std::vector<std::string> Observing::summary(const Observation &observation) {
    std::vector<std::string> lines;
    for (const Finding &finding : findingsOf(observation)) {
        const char *severity = finding.severity == Severity::Error     ? "error "
                               : finding.severity == Severity::Warning ? "warning "
                                                                       : "info ";
        EXPECT_EQ(finding.text.find('{'), std::string::npos) << finding.text;
        std::string line = severity + finding.code;
        for (const std::string &subject : {finding.adapter, finding.camera})
            line += subject.empty() ? "" : " " + subject;
        lines.push_back(line);
    }
    return lines;
}

Finding Observing::find(const Observation &observation, const std::string &code) {
    for (const Finding &finding : findingsOf(observation)) {
        if (finding.code == code)
            return finding;
    }
    ADD_FAILURE() << "no " << code << " in " << testing::PrintToString(summary(observation));
    return {};
}
