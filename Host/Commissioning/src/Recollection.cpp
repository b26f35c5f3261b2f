#include "commissioning/Recollection.h"

#include "commissioning/AddressText.h"
#include "commissioning/DeviceInfos.h"

namespace commissioning {

using Corvo::CDeviceInfo;

namespace {

constexpr std::chrono::seconds Age{59}; // a minute, less what a round may begin too early
constexpr std::chrono::seconds ChangeAge{9};

/// What a discovery tells of a camera.
std::string signatureOf(const CDeviceInfo &device) {
    const Camera camera = cameraOf(device);
    std::string text = std::to_string(camera.word);
    for (const Address address : {camera.address, camera.mask, camera.gateway})
        text += ' ' + toText(address);
    for (const std::string &part : {camera.vendor, camera.model, camera.serial, camera.name})
        text += '\n' + part;
    for (const std::string &name : camera.adapters)
        text += '\n' + name;
    return text;
}

/// Also of a camera whose adapter has just come up, when nothing gets through to it yet.
bool isBad(const CDeviceInfo &device) {
    const Status status = cameraOf(device).status;
    return status == Status::NotReachable || status == Status::Unknown;
}

std::string macOf(const CDeviceInfo &device) { return propertyOf(device, PropertyMac).c_str(); }

} // namespace

void Recollection::attach(SearchOptions *pOptions, Time now) {
    m_Now = now;
    for (auto known = m_Known.begin(); known != m_Known.end();)
        known = now - known->second.asked >= Age ? m_Known.erase(known) : std::next(known);
    pOptions->recall = [this](CDeviceInfo &device) { return recall(device); };
    pOptions->judged = [this, told = pOptions->judged](const CDeviceInfo &device) {
        learn(device);
        if (told)
            told(device);
    };
}

bool Recollection::recall(CDeviceInfo &device) {
    const auto found = m_Known.find(macOf(device));
    if (found == m_Known.end())
        return false;
    Known &known = found->second;
    const bool hasChanged = known.signature != signatureOf(device);
    const bool isDoubtful = hasChanged || isBad(known.device);
    if (isDoubtful && (!known.changed || m_Now - *known.changed >= (hasChanged ? ChangeAge : Age))) {
        known.changed = m_Now;
        return false;
    }
    for (const char *key : {PropertyVerdict, PropertyVerdictReason, PropertyHolder}) {
        if (known.device.GetPropertyAvailable(key))
            device.SetPropertyValue(key, propertyOf(known.device, key));
    }
    const auto stored = hasChanged ? std::nullopt : storedAddressesOf(known.device); // others may be stored by now
    if (stored)
        setStoredAddresses(device, *stored);
    device.ClearAccessFlags();
    return true;
}

void Recollection::learn(const CDeviceInfo &device) {
    Known &known = m_Known[macOf(device)];
    known.signature = signatureOf(device);
    known.asked = m_Now;
    known.device = device;
}

void HostRecollection::attach(DiagnosisOptions *pOptions, Recollection::Time now) {
    m_Now = now;
    if (m_Asked && now - *m_Asked >= Age)
        m_Asked.reset();
    pOptions->earlier = m_Asked ? &m_Host : nullptr;
}

void HostRecollection::learn(const Observation &seen) {
    if (m_Asked)
        return;
    m_Asked = m_Now;
    m_Host.firewall = seen.firewall;
    m_Host.connections = seen.connections;
}

Recollection::Time nextRound(Recollection::Time first, std::chrono::steady_clock::duration interval,
                             Recollection::Time now) {
    return first + ((now - first) / interval + 1) * interval;
}

} // namespace commissioning
