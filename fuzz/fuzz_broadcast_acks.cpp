// What comes back after a broadcast command. The bits of the first byte choose the command (0 discovery, 1 force IP, 2
// vendor configuration) and its kind. Records follow: where a datagram arrives, who sent it, its length, its bytes.
// What a discovery accepts becomes device infos. fuzz_broadcast_acks -max_len=4096 -timeout=5 CORPUS
// seeds/fuzz_broadcast_acks

#include "FuzzInput.h"
#include "support/ScriptedNetwork.h"

#include "MinimalCorvoGigETL/EnumCallee.h"
#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"
#include "gxapi/ForceIp.h"
#include "gxapi/SetIpConfiguration.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>

using namespace Corvo;

namespace {

const std::uint8_t mac[] = {0, 1, 2, 3, 4, 5};
constexpr std::size_t DiscoverySize = sizeof(GVCP_DISCOVERY_RESPONSE);
constexpr std::size_t DescriptionOffset =
    offsetof(GVCP_DISCOVERY_RESPONSE, Info) + offsetof(GEV_DISCOVERY_INFO, Description);

/// The length byte reaches from short datagrams to some that are a little longer than a discovery acknowledge.
std::size_t Length(std::uint8_t byte) { return byte < 250 ? byte : DiscoverySize + std::size_t{2} * byte - 504; }

Arrival ReadArrival(FuzzInput &input) {
    Arrival arrival;
    const unsigned where = input.Byte();
    const unsigned sender = input.Byte();
    arrival.row = where & 7;
    arrival.interface = static_cast<int>(where >> 3 & 3);
    arrival.destination = (where & 0x20) != 0 ? INADDR_BROADCAST : htonl(0x7F000001 + (where >> 6 & 1) * 0x200);
    arrival.error = (where & 0x80) != 0 ? ECONNREFUSED : 0;
    arrival.sender = htonl(0x7F000000 + ((sender & 3) << 8) + (sender >> 2));
    arrival.datagram = input.Take(Length(input.Byte()));
    return arrival;
}

bool Acknowledges(const Bytes &datagram, std::uint16_t code, std::size_t size) {
    return datagram.size() >= size && Half(datagram, 2) == code;
}

/// Compares what is reported with what was received.
class Checker : public Gx::Enumerator::Callee {
public:
    Checker(const std::vector<Bytes> &datagrams, DeviceInfoList &list) : m_Datagrams(datagrams), m_Next(list) {}

    GXSTATUS EnumCallback(const sockaddr *device, const GEV_DISCOVERY_INFO *info,
                          const sockaddr *adapter) noexcept override {
        const auto isSource = [info](const Bytes &datagram) {
            return Acknowledges(datagram, TAG_DISCOVERY_ACK, DiscoverySize) &&
                   std::memcmp(datagram.data() + DescriptionOffset, &info->Description, sizeof info->Description) ==
                       0 &&
                   Word(datagram, 8 + offsetof(GEV_DISCOVERY_INFO, DeviceMacAddress) + 4) == info->DeviceMacAddress.Low;
        };
        Require(std::any_of(m_Datagrams.begin(), m_Datagrams.end(), isSource), "a device out of nothing");
        Require(device->sa_family == AF_INET && adapter->sa_family == AF_INET, "addresses of a device");
        return m_Next.EnumCallback(device, info, adapter);
    }

private:
    const std::vector<Bytes> &m_Datagrams;
    EnumCallee m_Next;
};

void CheckInfo(const CQuorelGigEDeviceInfo &info) {
    const GV_DEVICE_DESCRIPTION *widths = nullptr;
    Require(info.GetModelName().size() <= sizeof widths->ModelName &&
                info.GetVendorName().size() <= sizeof widths->ManufacturerName &&
                info.GetSerialNumber().size() <= sizeof widths->SerialNumber &&
                info.GetUserDefinedName().size() <= sizeof widths->UserDefinedName &&
                info.GetDeviceVersion().size() <= sizeof widths->DeviceVersion,
            "a text longer than its field");
    const String_t digits = info.GetMacAddress();
    Require(digits.size() == 12 && digits.find_first_not_of("0123456789ABCDEF") == String_t::npos, "a MAC address");
    in_addr address{};
    for (const String_t &text : {info.GetIpAddress(), info.GetSubnetMask(), info.GetDefaultGateway(),
                                 info.GetSubnetAddress(), info.GetInterface()})
        Require(inet_pton(AF_INET, text, &address) == 1, "an IP address");
    Require(info.IsSubset(info) && !info.IsUserProvided() && !info.IsModified(), "an info that was found");
    info.IsPersistentIpActive();
    info.IsDhcpSupported();
}

void Discover(const std::vector<Bytes> &datagrams, std::uint32_t flags, const sockaddr *target) {
    DeviceInfoList list;
    Checker checker(datagrams, list);
    Require(Gx::Enumerator::Discover(&checker, 250, flags, target) == GX_SUCCESS, "a discovery");
    std::stable_sort(list.begin(), list.end());
    for (const CDeviceInfo &info : list)
        CheckInfo(info);
}

/// A success must have come from one of the datagrams.
void CheckStatus(GXSTATUS status, const std::vector<Bytes> &datagrams, std::uint16_t code) {
    const auto isGood = [code](const Bytes &datagram) {
        return Acknowledges(datagram, code, sizeof(GVCP_RESPONSE_HEADER)) && Half(datagram, 0) == 0;
    };
    Require(status == GX_E_TIMEOUT || status == GX_E_INTERNAL ||
                (status == GX_SUCCESS && std::any_of(datagrams.begin(), datagrams.end(), isGood)),
            "a success out of nothing");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    FuzzInput input(bytes, size);
    const unsigned choice = input.Byte();
    std::vector<Bytes> datagrams;
    ScriptedNetwork network([&](const Bytes &) {
        while (!input.IsEmpty()) {
            const Arrival arrival = ReadArrival(input);
            if (arrival.error == 0)
                datagrams.push_back(arrival.datagram);
            network.queue(arrival);
        }
        return 0;
    });
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(0x7F000009);
    const auto *device = reinterpret_cast<const sockaddr *>(&address);
    const bool broadcastAcknowledge = (choice & 4) != 0;
    switch (choice & 3) {
    case 1:
        CheckStatus(Gx::ForceIp(mac, device, device, device, 0), datagrams, TAG_FORCEIP_ACK);
        break;
    case 2:
        CheckStatus(Gx::SetIpConfiguration(mac, {}, device, device, device, nullptr, broadcastAcknowledge, 250),
                    datagrams, TAG_SETIPCONFIG_ACK);
        break;
    default:
        Discover(datagrams,
                 broadcastAcknowledge ? Gx::Enumerator::FlagBroadcastAcknowledge : Gx::Enumerator::FlagDefault,
                 (choice & 8) != 0 ? device : nullptr);
        Require(network.isQueueEmpty(), "an answer that nobody read");
    }
    return 0;
}
