#include "RegisterMap.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>

namespace camsim {
namespace {

constexpr std::uint32_t identityEnd = 0x00F8;
constexpr std::uint32_t urlSize = 512;
constexpr std::uint32_t persistentBlock = 0x0640; // three address fields of 16 bytes
constexpr std::uint32_t controlBlock = 0x0900;    // channel counts up to the discovery acknowledge delay
constexpr std::uint32_t activeLinks = 0x0910;
constexpr std::uint32_t timestampEnd = 0x0950;
constexpr std::int64_t usualPendingTimeout = 100; // ms
constexpr std::uint32_t nominalTick = 1000000000; // ns

std::uint64_t endOf(const MemoryRegion &region) { return std::uint64_t{region.address} + region.bytes.size(); }

std::string hex(std::uint64_t value) {
    char text[19];
    std::snprintf(text, sizeof text, "0x%llX", static_cast<unsigned long long>(value));
    return text;
}

std::string localUrl(const CameraConfig &config) {
    if (config.xml.empty())
        return {};
    char place[32];
    std::snprintf(place, sizeof place, ";%X;%zX", config.xmlAddress, config.xml.size());
    return "Local:" + config.xmlFileName + place;
}

} // namespace

RegisterMap::RegisterMap(const CameraConfig &config) : readOnly_(config.readOnly) {
    addIdentity(config);
    addDescription(config);
    addNetwork(config);
    addControl(config);
    for (const MemoryRegion &region : config.memory)
        addRegion(region);
}

void RegisterMap::addRegion(const MemoryRegion &region) {
    if (region.bytes.empty() || region.address % 4 != 0)
        throw std::invalid_argument("the memory at " + hex(region.address) + " is empty or not aligned to 4 bytes");
    MemoryRegion added = region;
    added.bytes.resize((region.bytes.size() + 3) / 4 * 4);
    if (endOf(added) > 0x100000000u)
        throw std::invalid_argument("the memory at " + hex(region.address) + " leaves the 32-bit address space");
    const auto next =
        std::upper_bound(regions_.begin(), regions_.end(), added.address,
                         [](std::uint32_t address, const MemoryRegion &r) { return address < r.address; });
    const bool overlaps = (next != regions_.end() && next->address < endOf(added)) ||
                          (next != regions_.begin() && endOf(*std::prev(next)) > added.address);
    if (overlaps)
        throw std::invalid_argument("the memory at " + hex(region.address) + " overlaps other memory or registers");
    regions_.insert(next, std::move(added));
}

void RegisterMap::addBootstrap(std::uint32_t address, std::uint32_t size, bool writable) {
    addRegion({address, std::vector<std::uint8_t>(size), writable});
}

void RegisterMap::addIdentity(const CameraConfig &config) {
    addBootstrap(0, GEV_REG_NETWORK_INTERFACE_CONFIGURATION, false);
    addBootstrap(GEV_REG_NETWORK_INTERFACE_CONFIGURATION, 4, true);
    addBootstrap(0x0018, GEV_REG_USER_DEFINED_NAME - 0x0018, false);
    addBootstrap(GEV_REG_USER_DEFINED_NAME, identityEnd - GEV_REG_USER_DEFINED_NAME,
                 (config.capabilities & GEV_CAPABILITY_USER_DEFINED_NAME) != 0);
    set(GEV_REG_VERSION, config.gevVersion);
    set(GEV_REG_DEVICE_MODE, config.deviceMode);
    set(GEV_REG_DEVICE_MAC_HIGH, static_cast<std::uint32_t>(config.mac.toNumber() >> 32));
    set(GEV_REG_DEVICE_MAC_LOW, static_cast<std::uint32_t>(config.mac.toNumber()));
    setText(GEV_REG_MANUFACTURER_NAME, 32, config.manufacturer, "manufacturer name");
    setText(GEV_REG_MODEL_NAME, 32, config.model, "model name");
    setText(GEV_REG_DEVICE_VERSION, 32, config.deviceVersion, "device version");
    setText(GEV_REG_MANUFACTURER_INFORMATION, 48, config.manufacturerInfo, "manufacturer information");
    setText(GEV_REG_SERIAL_NUMBER, 16, config.serial, "serial number");
    setText(GEV_REG_USER_DEFINED_NAME, 16, config.userName, "user-defined name");
}

void RegisterMap::addDescription(const CameraConfig &config) {
    addBootstrap(GEV_REG_FIRST_URL, urlSize, false);
    addBootstrap(GEV_REG_SECOND_URL, urlSize, false);
    setText(GEV_REG_FIRST_URL, urlSize, config.firstUrl ? *config.firstUrl : localUrl(config), "first URL");
    setText(GEV_REG_SECOND_URL, urlSize, config.secondUrl, "second URL");
    if (!config.xml.empty())
        addRegion({config.xmlAddress, config.xml, false});
}

void RegisterMap::addNetwork(const CameraConfig &config) {
    addBootstrap(GEV_REG_NUMBER_OF_NETWORK_INTERFACES, 4, false);
    addBootstrap(persistentBlock, 3 * sizeof(GEV_IP_ADDRESS), true);
    set(GEV_REG_NUMBER_OF_NETWORK_INTERFACES, 1);
    set(GEV_REG_NETWORK_INTERFACE_CAPABILITY, config.ipOptions);
    set(GEV_REG_NETWORK_INTERFACE_CONFIGURATION, config.ipEnabled & config.ipOptions);
    setPersistent(config.persistent);
}

void RegisterMap::addControl(const CameraConfig &config) {
    addBootstrap(controlBlock, GEV_REG_HEARTBEAT_TIMEOUT - controlBlock, false);
    addBootstrap(GEV_REG_HEARTBEAT_TIMEOUT, 4, true);
    addBootstrap(GEV_REG_TIMESTAMP_TICK_FREQUENCY_HIGH, 8, false);
    addBootstrap(GEV_REG_TIMESTAMP_CONTROL, 4, true);
    addBootstrap(GEV_REG_TIMESTAMP_VALUE_HIGH, timestampEnd - GEV_REG_TIMESTAMP_VALUE_HIGH, false);
    addBootstrap(GEV_REG_PENDING_TIMEOUT, 4, false);
    addBootstrap(GEV_REG_CONTROL_CHANNEL_PRIVILEGE, 4, true);
    if ((config.capabilities & GEV_CAPABILITY_PRIMARY_APPLICATION) != 0)
        addBootstrap(GEV_REG_PRIMARY_APPLICATION_PORT, 0x14, false);
    addBootstrap(GEV_REG_MESSAGE_CHANNEL_PORT, 4, true);
    addBootstrap(GEV_REG_MESSAGE_CHANNEL_DESTINATION, 12, true);
    addBootstrap(GEV_REG_STREAM_CHANNEL_PORT, GEV_STREAM_CHANNEL_STRIDE, true);
    set(GEV_REG_NUMBER_OF_MESSAGE_CHANNELS, 1);
    set(GEV_REG_NUMBER_OF_STREAM_CHANNELS, 1);
    set(activeLinks, 1);
    const bool pends = config.sendsPendingAck && config.flashTime.count() > 0;
    set(GEV_REG_GVCP_CAPABILITY, config.capabilities | (pends ? std::uint32_t{GEV_CAPABILITY_PENDING_ACK} : 0));
    set(GEV_REG_PENDING_TIMEOUT,
        static_cast<std::uint32_t>(std::max<std::int64_t>(config.flashTime.count(), usualPendingTimeout)));
    set(GEV_REG_HEARTBEAT_TIMEOUT, static_cast<std::uint32_t>(config.heartbeatTimeout.count()));
    set(GEV_REG_TIMESTAMP_TICK_FREQUENCY_LOW, nominalTick);
}

void RegisterMap::setText(std::uint32_t address, std::size_t size, const std::string &text, const char *what) {
    if (text.size() > size)
        throw std::invalid_argument(std::string("the ") + what + " '" + text + "' is longer than " +
                                    std::to_string(size) + " bytes");
    std::vector<std::uint8_t> field(text.begin(), text.end());
    field.resize(size);
    store(address, field.data(), field.size());
}

const MemoryRegion *RegisterMap::find(std::uint64_t address) const {
    const auto next = std::upper_bound(regions_.begin(), regions_.end(), address,
                                       [](std::uint64_t a, const MemoryRegion &r) { return a < r.address; });
    if (next == regions_.begin() || endOf(*std::prev(next)) <= address)
        return nullptr;
    return &*std::prev(next);
}

template <typename Visit>
bool RegisterMap::forEachStretch(std::uint32_t address, std::size_t count, Visit visit) const {
    std::size_t done = 0;
    while (done < count) {
        const std::uint64_t at = std::uint64_t{address} + done;
        const MemoryRegion *region = find(at);
        if (region == nullptr)
            return false;
        const std::size_t length = static_cast<std::size_t>(std::min<std::uint64_t>(count - done, endOf(*region) - at));
        visit(*region, static_cast<std::size_t>(at - region->address), done, length);
        done += length;
    }
    return true;
}

GevStatus RegisterMap::read(std::uint32_t address, std::size_t count, std::uint8_t *out) const {
    const bool found = forEachStretch(
        address, count, [out](const MemoryRegion &region, std::size_t offset, std::size_t done, std::size_t length) {
            std::memcpy(out + done, region.bytes.data() + offset, length);
        });
    return found ? GevStatus::Success : GevStatus::InvalidAddress;
}

GevStatus RegisterMap::writable(std::uint32_t address, std::size_t count) const {
    bool allowed = std::none_of(readOnly_.begin(), readOnly_.end(), [&](const AddressRange &range) {
        return address < std::uint64_t{range.address} + range.size && range.address < std::uint64_t{address} + count;
    });
    const bool found =
        forEachStretch(address, count, [&allowed](const MemoryRegion &region, std::size_t, std::size_t, std::size_t) {
            allowed = allowed && region.writable;
        });
    if (!found)
        return GevStatus::InvalidAddress;
    return allowed ? GevStatus::Success : GevStatus::WriteProtect;
}

void RegisterMap::store(std::uint32_t address, const std::uint8_t *bytes, std::size_t count) {
    const bool found = forEachStretch(
        address, count,
        [this, bytes](const MemoryRegion &region, std::size_t offset, std::size_t done, std::size_t length) {
            MemoryRegion &target = regions_[static_cast<std::size_t>(&region - regions_.data())];
            std::memcpy(target.bytes.data() + offset, bytes + done, length);
        });
    if (!found)
        throw std::out_of_range("the camera has no memory at " + hex(address));
}

std::uint32_t RegisterMap::get(std::uint32_t address) const {
    std::uint8_t bytes[4];
    if (read(address, sizeof bytes, bytes) != GevStatus::Success)
        throw std::out_of_range("the camera has no register at " + hex(address));
    return load32(bytes);
}

void RegisterMap::set(std::uint32_t address, std::uint32_t value) {
    std::uint8_t bytes[4];
    store32(bytes, value);
    store(address, bytes, sizeof bytes);
}

IpSettings RegisterMap::persistent() const {
    return {{get(GEV_REG_PERSISTENT_IP_ADDRESS)},
            {get(GEV_REG_PERSISTENT_SUBNET_MASK)},
            {get(GEV_REG_PERSISTENT_DEFAULT_GATEWAY)}};
}

void RegisterMap::setPersistent(const IpSettings &settings) {
    set(GEV_REG_PERSISTENT_IP_ADDRESS, settings.address.value);
    set(GEV_REG_PERSISTENT_SUBNET_MASK, settings.mask.value);
    set(GEV_REG_PERSISTENT_DEFAULT_GATEWAY, settings.gateway.value);
}

void RegisterMap::setCurrent(const IpSettings &settings) {
    set(GEV_REG_CURRENT_IP_ADDRESS, settings.address.value);
    set(GEV_REG_CURRENT_SUBNET_MASK, settings.mask.value);
    set(GEV_REG_CURRENT_DEFAULT_GATEWAY, settings.gateway.value);
}

std::string RegisterMap::userName() const {
    char name[16];
    std::uint8_t bytes[sizeof name];
    (void)read(GEV_REG_USER_DEFINED_NAME, sizeof bytes, bytes);
    std::memcpy(name, bytes, sizeof bytes);
    return {name, strnlen(name, sizeof name)};
}

} // namespace camsim
