#include "commissioning/CameraDump.h"

#include "Base/GCException.h"
#include "MinimalCorvoGigETL/ControlChannelPtr.h"
#include "MinimalCorvoGigETL/XmlFileProvider.h"
#include "SideBySide.h"
#include "gxapi/Enumerator.h"
#include "gxapi/StopToken.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <netinet/in.h>

namespace commissioning {

namespace {

struct BootstrapRegister {
    const char *name;
    std::uint32_t address;
    std::uint32_t bytes;
};

// What says who streams to whom is left out, as nobody asks for images here.
constexpr BootstrapRegister BootstrapRegisters[] = {
    {"Version", GEV_REG_VERSION, 4},
    {"Device Mode", GEV_REG_DEVICE_MODE, 4},
    {"Device MAC address - High", GEV_REG_DEVICE_MAC_HIGH, 4},
    {"Device MAC address - Low", GEV_REG_DEVICE_MAC_LOW, 4},
    {"Network Interface Capability", GEV_REG_NETWORK_INTERFACE_CAPABILITY, 4},
    {"Network Interface Configuration", GEV_REG_NETWORK_INTERFACE_CONFIGURATION, 4},
    {"Current IP address", GEV_REG_CURRENT_IP_ADDRESS, 4},
    {"Current subnet mask", GEV_REG_CURRENT_SUBNET_MASK, 4},
    {"Current default gateway", GEV_REG_CURRENT_DEFAULT_GATEWAY, 4},
    {"Manufacturer name", GEV_REG_MANUFACTURER_NAME, 32},
    {"Model name", GEV_REG_MODEL_NAME, 32},
    {"Device version", GEV_REG_DEVICE_VERSION, 32},
    {"Manufacturer specific information", GEV_REG_MANUFACTURER_INFORMATION, 48},
    {"Serial number", GEV_REG_SERIAL_NUMBER, 16},
    {"User-defined name", GEV_REG_USER_DEFINED_NAME, 16},
    {"First URL", GEV_REG_FIRST_URL, 512},
    {"Second URL", GEV_REG_SECOND_URL, 512},
    {"Number of network interfaces", GEV_REG_NUMBER_OF_NETWORK_INTERFACES, 4},
    {"Persistent IP address", GEV_REG_PERSISTENT_IP_ADDRESS, 4},
    {"Persistent subnet mask", GEV_REG_PERSISTENT_SUBNET_MASK, 4},
    {"Persistent default gateway", GEV_REG_PERSISTENT_DEFAULT_GATEWAY, 4},
    {"Number of message channels", GEV_REG_NUMBER_OF_MESSAGE_CHANNELS, 4},
    {"Number of stream channels", GEV_REG_NUMBER_OF_STREAM_CHANNELS, 4},
    {"GVCP capability", GEV_REG_GVCP_CAPABILITY, 4},
    {"Heartbeat timeout", GEV_REG_HEARTBEAT_TIMEOUT, 4},
    {"Timestamp tick frequency - High", GEV_REG_TIMESTAMP_TICK_FREQUENCY_HIGH, 4},
    {"Timestamp tick frequency - Low", GEV_REG_TIMESTAMP_TICK_FREQUENCY_LOW, 4},
    {"Pending timeout", GEV_REG_PENDING_TIMEOUT, 4},
    {"Control channel privilege", GEV_REG_CONTROL_CHANNEL_PRIVILEGE, 4},
    {"Primary application port", GEV_REG_PRIMARY_APPLICATION_PORT, 4},
    {"Primary application IP address", GEV_REG_PRIMARY_APPLICATION_IP_ADDRESS, 4},
    {"Message channel port", GEV_REG_MESSAGE_CHANNEL_PORT, 4},
    {"Message channel destination", GEV_REG_MESSAGE_CHANNEL_DESTINATION, 4},
    {"Stream channel 0 port", GEV_REG_STREAM_CHANNEL_PORT, 4},
    {"Stream channel 0 destination", GEV_REG_STREAM_CHANNEL_DESTINATION, 4},
};

std::vector<RegisterDump> readRegisters(const Corvo::CQuorelGigEDeviceInfo &device) {
    constexpr std::uint32_t Lifetime_ms = 5000; // whatever the camera answers
    Corvo::ControlChannelPtr channel;
    std::vector<RegisterDump> dump;
    if (Corvo::OpenControlChannel(device, 0, &channel, Lifetime_ms) != GX_SUCCESS)
        return dump;
    for (const BootstrapRegister &one : BootstrapRegisters) {
        std::vector<std::uint8_t> bytes(one.bytes);
        std::uint32_t value = 0;
        GXSTATUS status = GX_SUCCESS;
        if (one.bytes == sizeof value) { // which a camera need not serve as memory
            status = channel->ReadReg(&one.address, &value, 1);
            value = htonl(value);
            std::memcpy(bytes.data(), &value, sizeof value);
        } else {
            status = channel->ReadMem(one.address, bytes.data(), one.bytes);
        }
        if (status != GX_SUCCESS)
            bytes.clear();
        dump.push_back({one.name, one.address, std::move(bytes)});
    }
    return dump;
}

CameraDump dumpOf(const Corvo::CQuorelGigEDeviceInfo &device) {
    CameraDump dump;
    dump.registers = readRegisters(device);
    if (dump.registers.empty()) {
        dump.problem = "The camera could not be connected to.";
        return dump;
    }
    try {
        const Corvo::XmlFileProviderPrivateImpl provider{std::chrono::seconds(10)};
        provider.ProvideXmlFileRaw(device, dump.description);
    } catch (const GenICam::GenericException &error) {
        dump.description.clear();
        dump.problem = error.GetDescription();
    }
    return dump;
}

/// Keeps what a discovery hears.
class Recorder : public Gx::Enumerator::Callee {
public:
    GXSTATUS EnumCallback(const sockaddr *device, const GEV_DISCOVERY_INFO *info,
                          const sockaddr *adapter) noexcept override try {
        constexpr std::size_t Words = offsetof(GEV_DISCOVERY_INFO, Description) / sizeof(std::uint32_t);
        const auto addressOf = [](const sockaddr *address) {
            sockaddr_in in{};
            std::memcpy(&in, address, sizeof in);
            return ntohl(in.sin_addr.s_addr);
        };
        std::uint32_t words[Words];
        std::memcpy(words, info, sizeof words);
        for (std::uint32_t &word : words)
            word = htonl(word); // as it came
        Acknowledge acknowledge{addressOf(device), addressOf(adapter), std::vector<std::uint8_t>(sizeof *info)};
        std::memcpy(acknowledge.bytes.data(), info, sizeof *info);
        std::memcpy(acknowledge.bytes.data(), words, sizeof words);
        char mac[sizeof "025AE3000001"];
        std::snprintf(mac, sizeof mac, "%04X%08X", info->DeviceMacAddress.High & 0xFFFF, info->DeviceMacAddress.Low);
        heard[mac].push_back(std::move(acknowledge));
        return GX_SUCCESS;
    } catch (const std::exception &) {
        return GX_SUCCESS; // out of memory
    }

    std::map<std::string, std::vector<Acknowledge>> heard;
};

} // namespace

void dumpCameras(const std::vector<Corvo::CQuorelGigEDeviceInfo> &devices, std::chrono::steady_clock::time_point end,
                 const std::function<void(std::size_t index, const CameraDump &dump)> &read) {
    constexpr std::size_t MaxAtOnce = 16; // so that descriptions do not crowd each other's links
    sideBySide(devices.size(), std::min(MaxAtOnce, spareDescriptors()), [&](std::size_t index) {
        if (std::chrono::steady_clock::now() < end && !Gx::CStopScope::IsStopRequested())
            read(index, dumpOf(devices[index]));
    });
}

std::map<std::string, std::vector<Acknowledge>> acknowledges(const std::vector<Address> &ask) {
    constexpr std::uint32_t Broadcast_ms = 250;
    constexpr std::uint32_t Unicast_ms = 1000;
    Recorder recorder;
    (void)Gx::Enumerator::Discover(&recorder, Broadcast_ms, Gx::Enumerator::FlagBroadcastAcknowledge, nullptr);
    for (const Address address : ask) {
        sockaddr_in target{};
        target.sin_family = AF_INET;
        target.sin_addr.s_addr = htonl(address);
        (void)Gx::Enumerator::Discover(&recorder, Unicast_ms, Gx::Enumerator::FlagDefault,
                                       reinterpret_cast<const sockaddr *>(&target));
    }
    return std::move(recorder.heard);
}

} // namespace commissioning
