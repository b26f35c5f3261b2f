#include "gxapi/Enumerator.h"

#include "BroadcastSocketCollection.h"
#include "EnumCollector.h"
#include "GvcpCommands.h"
#include "StopPoll.h"
#include "TraceImp.h"

#include <cstring>
#include <new>

namespace GxImp {

namespace {

/// More acknowledges than this are a flood; bounds what it costs the callers (some 10 MB here).
constexpr std::size_t MaxAcknowledges = 16384;
/// 32-bit words of the discovery information that are numbers: all up to the text fields.
constexpr std::size_t NumberWords = offsetof(GEV_DISCOVERY_INFO, Description) / sizeof(std::uint32_t);

void NumbersToHostOrder(GEV_DISCOVERY_INFO &info) noexcept {
    std::uint32_t words[NumberWords];
    std::memcpy(words, &info, sizeof words);
    for (std::uint32_t &word : words)
        word = ntohl(word);
    std::memcpy(static_cast<void *>(&info), words, sizeof words);
}

} // namespace

CEnumCollector::CEnumCollector(Gx::Enumerator::Callee *pCallee, bool acceptAll) noexcept
    : m_pCallee(pCallee), m_AcceptAll(acceptAll) {}

GXSTATUS CEnumCollector::OnReady(CSocket &socket, const _GX_SOCKET_INTERFACE_INFO &interfaceInfo) noexcept {
    GVCP_DISCOVERY_RESPONSE response{};
    std::size_t received = 0;
    sockaddr_in sender{};
    const GXSTATUS status = ReceiveDatagram(socket, &response, sizeof response, received, sender,
                                            "Failed to receive discovery response with socketerror");
    if (status != GX_SUCCESS)
        return status;
    if (!AcceptSender(sender, interfaceInfo, m_AcceptAll))
        return GX_SUCCESS;
    if (received < sizeof response) {
        GX_TRACE(FlagDiscovery, LevelWarning, "Invalid discover response size received %d", static_cast<int>(received));
        return GX_SUCCESS;
    }
    const std::uint16_t code = ntohs(response.Header.Acknowledge);
    if (code != TAG_DISCOVERY_ACK) {
        GX_TRACE(FlagDiscovery, LevelWarning, "Unexpected response during device discovering %#hx", code);
        return GX_SUCCESS;
    }
    NumbersToHostOrder(response.Info);
    return Keep({sender, interfaceInfo.InterfaceAddrIn, CurrentRow(), response.Info});
}

GXSTATUS CEnumCollector::Keep(const Acknowledge &acknowledge) noexcept {
    if (m_Acknowledges.size() == MaxAcknowledges)
        return GX_E_OUT_OF_MEMORY;
    try {
        m_Acknowledges.push_back(acknowledge);
    } catch (const std::bad_alloc &) {
        return GX_E_OUT_OF_MEMORY;
    }
    return GX_SUCCESS;
}

void CEnumCollector::Deliver() noexcept {
    for (const Acknowledge &acknowledge : m_Acknowledges) {
        if (IsStopRequested())
            break;
        TraceResult(acknowledge.row, Report(acknowledge));
    }
    m_Acknowledges.clear();
}

GXSTATUS CEnumCollector::Report(const Acknowledge &acknowledge) noexcept {
    if (!m_pCallee)
        return GX_SUCCESS;
    return m_pCallee->EnumCallback(AsSockaddr(acknowledge.sender), &acknowledge.info, AsSockaddr(acknowledge.adapter));
}

namespace {

GXSTATUS CreateCollection(std::uint32_t flags, const sockaddr *target,
                          CBroadcastSocketCollection::Ptr *pCollection) noexcept {
    const bool broadcastAcknowledge = (flags & Gx::Enumerator::FlagBroadcastAcknowledge) != 0;
    if (!target)
        return broadcastAcknowledge ? CBroadcastSocketCollection::CreateWithDedicatedReceiver(pCollection)
                                    : CBroadcastSocketCollection::Create(pCollection);
    const sockaddr_in address = DeviceAddress(target);
    return broadcastAcknowledge
               ? CBroadcastSocketCollection::CreateWithDedicatedReceiverAndUnicastSocket(address, pCollection)
               : CBroadcastSocketCollection::CreateWithUnicastSocket(address, pCollection);
}

GXSTATUS SendAndCollect(CBroadcastSocketCollection &collection, Gx::Enumerator::Callee *callee,
                        std::uint32_t timeout_ms, std::uint32_t flags, bool unicast) noexcept {
    DiscoveryCommand command;
    GXSTATUS status = command.FormatRequest(flags);
    if (status != GX_SUCCESS)
        return status;
    const bool broadcastAcknowledge = (flags & Gx::Enumerator::FlagBroadcastAcknowledge) != 0;
    status = unicast ? collection.SendUnicast(command.GetRequest())
                     : collection.SendBroadcast(command.GetRequest(), broadcastAcknowledge, 0);
    if (status != GX_SUCCESS) // Nothing went out, nothing will come back.
        return status;

    CEnumCollector collector(callee, broadcastAcknowledge || unicast);
    status = collection.Collect(collector, timeout_ms);
    collector.Deliver();
    if (status == GX_E_TIMEOUT)
        return GX_SUCCESS;
    if (status != GX_SUCCESS)
        GX_TRACE(FlagDiscovery, LevelError, "Failed to collect device discovery responses. Status=0x%08x.", status);
    return status;
}

GXSTATUS DiscoverDevices(Gx::Enumerator::Callee *callee, std::uint32_t timeout_ms, std::uint32_t flags,
                         const sockaddr *target) noexcept {
    if (target && !IsIPv4(target)) {
        GX_TRACE(FlagDiscovery, LevelError, "Only IPv4 addressing supported. Found %hu.", target->sa_family);
        return GX_E_ONLY_IPV4;
    }
    CBroadcastSocketCollection::Ptr collection;
    const GXSTATUS status = CreateCollection(flags, target, &collection);
    if (status != GX_SUCCESS) {
        GX_TRACE(FlagDiscovery, LevelError, "Failed create socket collection");
        return status;
    }
    return SendAndCollect(*collection, callee, timeout_ms, flags, target != nullptr);
}

} // namespace

} // namespace GxImp

GXSTATUS Gx::Enumerator::Discover(Callee *callee, std::uint32_t timeout_ms, std::uint32_t flags,
                                  const sockaddr *target) noexcept {
    const GXSTATUS status = GxImp::DiscoverDevices(callee, timeout_ms, flags, target);
    GX_TRACE(FlagDiscovery, LevelMostVerbose, "Discovery,Status 0x%x", status);
    return status;
}
