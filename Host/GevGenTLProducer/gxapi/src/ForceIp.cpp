#include "gxapi/ForceIp.h"

#include "BroadcastSocketCollection.h"
#include "GvcpCommands.h"
#include "TraceImp.h"

namespace GxImp {

namespace {

constexpr std::uint32_t AcknowledgeTimeout_ms = 3000;
constexpr std::uint32_t SendPause_ms = 10;

/// Waits for the first successful FORCEIP acknowledge, whoever sends it.
class CForceIpCollector : public CCollector {
public:
    GXSTATUS OnReady(CSocket &socket, const _GX_SOCKET_INTERFACE_INFO &) noexcept override {
        GVCP_FORCEIP_RESPONSE response{};
        std::size_t received = 0;
        sockaddr_in sender{};
        GXSTATUS status = ReceiveDatagram(socket, &response, sizeof response, received, sender,
                                          "Failed to receive force IP response. Error");
        if (status != GX_SUCCESS)
            return status;
        if (received < sizeof response) {
            GX_TRACE(FlagDiscovery, LevelWarning, "Invalid force IP response size received %d",
                     static_cast<int>(received));
            return GX_E_SHORT_DATA;
        }
        const std::uint16_t code = ntohs(response.Acknowledge);
        if (code != TAG_FORCEIP_ACK) {
            GX_TRACE(FlagDiscovery, LevelWarning, "Unexpected response on force IP %#hx", code);
            return GX_E_UNEXPECTED_RESPONSE;
        }
        status = GxStatusFromGv(ntohs(response.Status));
        if (status == GX_SUCCESS)
            StopCollecting();
        return status;
    }
};

bool IsUnspecified(const sockaddr *address) noexcept {
    return reinterpret_cast<const sockaddr_in *>(address)->sin_addr.s_addr == htonl(INADDR_ANY);
}

} // namespace

} // namespace GxImp

GXSTATUS Gx::ForceIp(const std::uint8_t *mac, const sockaddr *ip, const sockaddr *subnetMask, const sockaddr *gateway,
                     std::uint16_t port) noexcept {
    using namespace GxImp;
    if (!mac)
        return GX_E_INVALID_PARAMETER;
    if (!IsIPv4(ip)) {
        GX_TRACE(FlagDiscovery, LevelError, "Only IPv4 addressing supported.\n");
        return GX_E_ONLY_IPV4;
    }
    CBroadcastSocketCollection::Ptr collection;
    GXSTATUS status = CBroadcastSocketCollection::Create(&collection);
    if (status != GX_SUCCESS)
        return status;
    Pause pause(SendPause_ms);
    collection->AddPostOperation(pause);

    ForceIpCommand command;
    status = command.FormatRequest(mac, ip, subnetMask, gateway);
    if (status == GX_SUCCESS)
        status = collection->SendBroadcast(command.GetRequest(), true, port);
    // A device told to restart its IP cycle has no address to acknowledge from.
    if (status != GX_SUCCESS || IsUnspecified(ip))
        return status;

    CForceIpCollector collector;
    status = collection->Collect(collector, AcknowledgeTimeout_ms);
    if (status != GX_SUCCESS)
        GX_TRACE(FlagDiscovery, LevelError, "Failed to collect force IP responses. Status 0x%08x", status);
    return status;
}
