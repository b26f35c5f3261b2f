#include "gxapi/SetIpConfiguration.h"

#include "BroadcastSocketCollection.h"
#include "GvcpCommands.h"
#include "TraceImp.h"

namespace GxImp {

namespace {

/// Waits for the acknowledge of the vendor's IP configuration command.
class CSetIpConfigurationCollector : public CCollector {
public:
    explicit CSetIpConfigurationCollector(bool acceptAll) noexcept : m_AcceptAll(acceptAll) {}

    GXSTATUS OnReady(CSocket &socket, const _GX_SOCKET_INTERFACE_INFO &interfaceInfo) noexcept override {
        GVCP_SETIPCONFIG_RESPONSE response{};
        std::size_t received = 0;
        sockaddr_in sender{};
        const GXSTATUS status = ReceiveDatagram(socket, &response, sizeof response, received, sender,
                                                "Failed to receive set IP configuration response with socketerror");
        if (status != GX_SUCCESS)
            return status;
        if (!AcceptSender(sender, interfaceInfo, m_AcceptAll))
            return GX_SUCCESS;
        if (received < sizeof response) {
            GX_TRACE(FlagDiscovery, LevelWarning, "Invalid set IP configuration response size received %d",
                     static_cast<int>(received));
            return GX_SUCCESS;
        }
        const std::uint16_t code = ntohs(response.Acknowledge);
        if (code != TAG_SETIPCONFIG_ACK) {
            TraceUnexpected(code);
            return GX_SUCCESS;
        }
        return HandleStatus(ntohs(response.Status));
    }

    /// The failure reported by the device that ended the collection, 0 for none.
    GXSTATUS GetResult() const noexcept { return m_Result; }

private:
    static void TraceUnexpected(std::uint16_t value) noexcept {
        GX_TRACE(FlagDiscovery, LevelWarning, "Unexpected response during set IP configuration %#hx", value);
    }

    GXSTATUS HandleStatus(GEV_STATUS status) noexcept {
        switch (GxStatusFromGv(status)) {
        case GX_SUCCESS:
            StopCollecting();
            return GX_SUCCESS;
        case GX_E_GEV_ERROR:
            m_Result = GX_E_INTERNAL;
            StopCollecting();
            return GX_E_INTERNAL;
        case GX_E_GEV_NOT_IMPLEMENTED: // Another device may still acknowledge: the wait goes on.
            GX_TRACE(FlagDiscovery, LevelWarning, "Camera command Set IP Configuration not implemented");
            return GX_E_NOT_IMPLEMENTED;
        default:
            TraceUnexpected(status);
            return GX_SUCCESS;
        }
    }

    bool m_AcceptAll;
    GXSTATUS m_Result = GX_SUCCESS;
};

} // namespace

} // namespace GxImp

GXSTATUS Gx::SetIpConfiguration(const std::uint8_t *mac, GEV_IP_CONFIG ipConfig, const sockaddr *ip,
                                const sockaddr *subnetMask, const sockaddr *gateway, const char *userDefinedName,
                                bool broadcastAck, std::uint32_t timeout_ms) noexcept {
    using namespace GxImp;
    if (!mac)
        return GX_E_INVALID_PARAMETER;
    if (ip && !IsIPv4(ip)) {
        GX_TRACE(FlagDiscovery, LevelError, "Only IPv4 addressing supported.\n");
        return GX_E_ONLY_IPV4;
    }
    CBroadcastSocketCollection::Ptr collection;
    GXSTATUS status = broadcastAck ? CBroadcastSocketCollection::CreateWithDedicatedReceiver(&collection)
                                   : CBroadcastSocketCollection::Create(&collection);
    if (status != GX_SUCCESS)
        return status;

    SetIpConfigurationCommand command;
    status = command.FormatRequest(mac, ipConfig, ip, subnetMask, gateway, userDefinedName, broadcastAck);
    if (status == GX_SUCCESS)
        status = collection->SendBroadcast(command.GetRequest(), true, 0);
    if (status != GX_SUCCESS)
        return status;

    CSetIpConfigurationCollector collector(broadcastAck);
    status = collection->Collect(collector, timeout_ms);
    return status == GX_SUCCESS ? collector.GetResult() : status;
}
