// Construction, opening, closing and loss of the device.

#include "MinimalCorvoGigETL/GigEDevice.h"

#include "MinimalCorvoGigETL/DeviceLog.h"
#include "MinimalCorvoGigETL/DeviceNodeMap.h"
#include "MinimalCorvoGigETL/GxStatus2Msg.h"
#include "MinimalCorvoGigETL/SurpriseRemovalController.h"
#include "MinimalCorvoGigETL/XmlFileProvider.h"
#include "MinimalCorvoGigETL/tools.h"

#include "Base/GCException.h"
#include "MinimalCorvo/EmbeddedNodeMapFactory.h"

#include <cassert>

namespace Corvo {

namespace {

using Lock = std::lock_guard<std::recursive_mutex>;
using tracelog::LogTrace;
using tracelog::lvInfo;
using tracelog::lvNotice;
using tracelog::lvWarning;

constexpr char TLParamsName[] = "GigETLParams";
constexpr char DevicePortName[] = "Device";

std::uint32_t PrivilegeFor(const AccessModeSet &modes) {
    return (modes.test(Control) ? GEV_CONTROL_ACCESS : 0u) |
           (modes.test(Exclusive) ? GEV_EXCLUSIVE_CONTROL_ACCESS : 0u);
}

void ThrowOpenFailure(const String_t &name, GXSTATUS status) {
    const String_t text = GxStatus2Msg(status);
    // The line feed belongs to the text.
    if (status == GX_E_GEV_ACCESS_DENIED)
        throw RUNTIME_EXCEPTION("Failed to open '%s'. The device is controlled by another application. "
                                "Err: %s (0x%08X)\n",
                                name.c_str(), text.c_str(), status);
    throw RUNTIME_EXCEPTION("Failed to open '%s'. The device is not reachable or controlled by another application. "
                            "Err: %s (0x%08X)",
                            name.c_str(), text.c_str(), status);
}

} // namespace

/// Marks the device as being opened, so that a second thread is turned away while no lock is held.
class CGigEDevice::COpening {
public:
    explicit COpening(CGigEDevice &device) : m_device(device) {
        const Lock lock(device.m_memberLock);
        if (device.IsOpen() || device.m_isOpening)
            throw LOGICAL_ERROR_EXCEPTION("Device '%s' already open.", device.m_Info.GetFullName().c_str());
        device.m_isOpening = true;
    }
    ~COpening() {
        const Lock lock(m_device.m_memberLock);
        m_device.m_isOpening = false;
    }
    COpening(const COpening &) = delete;
    COpening &operator=(const COpening &) = delete;

private:
    CGigEDevice &m_device;
};

CGigEDevice::CGigEDevice(const CQuorelGigEDeviceInfo &info)
    : m_closingLock(std::make_shared<std::recursive_mutex>()),
      m_isRemovalPending(std::make_shared<std::atomic<bool>>(false)), m_Info(info),
      m_pPort(std::make_unique<CGxPort>()),
      m_pControlChannelStatisticPort(std::make_unique<CControlChannelStatisticPort>()), m_CameraNodeMap("Device") {
    LoadTLParams();
    RegisterTLParamCallbacks();
}

CGigEDevice::~CGigEDevice() {
    if (IsOpen())
        (void)InternalClose();
}

void CGigEDevice::LoadTLParams() {
    GenApi::INodeMap *const nodeMap = CreateNodeMapFromEmbeddedXML(TLParamsName);
    if (nodeMap == nullptr)
        throw RUNTIME_EXCEPTION("Failed to load embedded nodemap %s", TLParamsName);
    m_pTLParamsNodeMap = std::make_unique<CTLParamsNodeMapPtr::element_type>(nodeMap);
    m_pTLParamsNodeMap->_Connect(m_pControlChannelStatisticPort.get(), "StatisticPort");
    const std::uint32_t timeout_ms = GetDefaultHeartbeatTimeout();
    if (timeout_ms == 0)
        return;
    LogTrace(DeviceLogCategory(), lvInfo, "Settings gige heartbeat timeout to %ldms", static_cast<long>(timeout_ms));
    // Unverified: a timeout that no channel accepts shall fail when the device is opened, with the reason.
    m_pTLParamsNodeMap->HeartbeatTimeout->SetValue(timeout_ms, false);
}

bool CGigEDevice::IsOpen() const {
    const Lock lock(m_memberLock);
    return m_pControlChannel != nullptr;
}

const CDeviceInfo &CGigEDevice::GetDeviceInfo() const {
    const Lock lock(m_memberLock);
    return m_Info;
}

AccessModeSet CGigEDevice::AccessMode() const {
    const Lock lock(m_memberLock);
    return m_AccessMode;
}

GenApi::INodeMap *CGigEDevice::GetNodeMap() {
    const Lock lock(m_memberLock);
    return m_CameraNodeMap._GetNodeMap();
}

GenApi::INodeMap *CGigEDevice::GetTLNodeMap() {
    const Lock lock(m_memberLock);
    return m_pTLParamsNodeMap->_GetNodeMap();
}

void CGigEDevice::Open(AccessModeSet modes) {
    const COpening opening(*this);
    try {
        RegisterTLHeartbeatCallback();
        OpenChannel(modes);
    } catch (...) {
        LogTrace(DeviceLogCategory(), lvNotice, "Device open failed for '%s'.", m_Info.GetFullName().c_str());
        (void)InternalClose();
        throw;
    }
    LogTrace(DeviceLogCategory(), lvNotice, "Device '%s' opened successfully.", m_Info.GetFullName().c_str());
}

void CGigEDevice::OpenChannel(const AccessModeSet &modes) {
    const CQuorelGigEDeviceInfo info(GetDeviceInfo());
    const std::uint32_t privilege = PrivilegeFor(modes);
    LogTrace(DeviceLogCategory(), lvNotice, "Opening camera '%s'; Privileges: %d; IP: %s; IF: %s",
             info.GetFullName().c_str(), static_cast<int>(privilege), info.GetIpAddress().c_str(),
             info.GetInterface().c_str());
    ControlChannelPtr channel;
    const GXSTATUS status = OpenControlChannel(info, privilege, &channel);
    if (status != GX_SUCCESS)
        ThrowOpenFailure(info.GetFullName(), status);
    AttachChannel(std::move(channel), modes);
}

void CGigEDevice::AttachChannel(ControlChannelPtr channel, const AccessModeSet &modes) {
    auto controller = std::make_shared<CSurpriseRemovalController>();
    (void)channel->RegisterSurpriseRemovalCallback(this);
    const Lock lock(m_memberLock);
    m_AccessMode = modes;
    m_pSurpriseRemovalController = std::move(controller);
    {
        const std::lock_guard<std::mutex> channelLock(m_channelLock);
        m_pControlChannel = std::move(channel);
    }
    m_pPort->AttachControlChannel(*m_pControlChannel, modes);
    m_pControlChannelStatisticPort->AttachControlChannel(*m_pControlChannel);
    ImposeWriteTimeoutAccess(modes.test(Control) ? GenApi::RW : GenApi::RO);
    m_pTLParamsNodeMap->_InvalidateNodes(); // hands the parameters to the new channel
    RegisterCameraHeartbeatCallback();
}

void CGigEDevice::ImposeWriteTimeoutAccess(GenApi::EAccessMode mode) {
    m_pTLParamsNodeMap->WriteTimeout->GetNode()->ImposeAccessMode(mode);
}

void CGigEDevice::Close() {
    const Lock closingLock(*m_closingLock); // of two threads that close, the later must not undo a new opening half-way
    if (!IsOpen())
        throw LOGICAL_ERROR_EXCEPTION("Control channel already closed.");
    if (const std::exception_ptr failure = InternalClose())
        std::rethrow_exception(failure);
}

std::exception_ptr CGigEDevice::InternalClose() noexcept {
    const Lock closingLock(*m_closingLock);
    LogTrace(DeviceLogCategory(), lvNotice, "Closing device '%s'.", m_Info.GetFullName().c_str());
    EndRemovalNotification();
    std::exception_ptr failure;
    {
        const Lock lock(m_memberLock);
        DeregisterHeartbeatCallbacks();
        failure = DetachChannel();
    }
    LogTrace(DeviceLogCategory(), lvNotice, "Device '%s' closed successfully.", m_Info.GetFullName().c_str());
    return failure;
}

/// With the closing lock held, which keeps the channel in place.
void CGigEDevice::EndRemovalNotification() {
    std::shared_ptr<CSurpriseRemovalController> controller;
    Gx::ControlChannel *channel = nullptr;
    {
        const Lock lock(m_memberLock);
        controller.swap(m_pSurpriseRemovalController);
        channel = m_pControlChannel.get();
    }
    if (controller != nullptr)
        controller->DeregisterAll(); // ends the round when one of its own callbacks closes the device
    if (channel != nullptr)
        (void)channel->RegisterSurpriseRemovalCallback(nullptr);
}

std::exception_ptr CGigEDevice::DetachChannel() {
    std::exception_ptr failure;
    m_pPort->DetachControlChannel();
    try {
        InvalidateDeviceNode();
    } catch (const GenICam::GenericException &) {
        failure = std::current_exception();
    }
    m_pControlChannelStatisticPort->DetachControlChannel();
    ControlChannelPtr channel;
    {
        const std::lock_guard<std::mutex> channelLock(m_channelLock);
        channel.swap(m_pControlChannel);
    }
    channel.reset();
    m_AccessMode = AccessModeSet();
    m_bSurpriseRemoved = false;
    *m_isRemovalPending = false;
    ImposeWriteTimeoutAccess(GenApi::RW);
    return failure;
}

void CGigEDevice::InvalidateDeviceNode() {
    if (!m_CameraNodeMap._IsAttached())
        return;
    GenApi::INode *const device = m_CameraNodeMap._GetNode(DevicePortName);
    if (device == nullptr)
        throw ACCESS_EXCEPTION("Cannot invalidate Device node. Reference not set for '%s'.",
                               m_Info.GetFullName().c_str());
    device->InvalidateNode();
}

std::shared_ptr<CGigEDevice::CSurpriseRemovalController> CGigEDevice::OpenController(const char *operation) const {
    const Lock lock(m_memberLock);
    if (m_pSurpriseRemovalController == nullptr) // a little earlier than the channel goes when the device closes
        throw LOGICAL_ERROR_EXCEPTION("Camera object must not be closed (%s)", operation);
    return m_pSurpriseRemovalController;
}

DeviceCallbackHandle CGigEDevice::RegisterRemovalCallback(DeviceCallback &callback) {
    return OpenController("RegisterRemovalCallback")->Register(callback);
}

bool CGigEDevice::DeregisterRemovalCallback(DeviceCallbackHandle handle) {
    return OpenController("DeregisterRemovalCallback")->Deregister(handle);
}

void CGigEDevice::OnSurpriseRemoval() noexcept {
    const std::shared_ptr<std::recursive_mutex> lock = m_closingLock;
    const std::shared_ptr<std::atomic<bool>> isPending = m_isRemovalPending;
    *isPending = true;
    // Whoever has the lock is closing this very channel, or runs the callbacks of an earlier loss, one of which opened
    // the device again: then it finds the flag, at the latest after unlocking. Once a callback has destroyed the device
    // the flag is clear for good, so that nothing of the device is touched any more.
    while (*isPending) {
        const std::unique_lock<std::recursive_mutex> closingLock(*lock, std::try_to_lock);
        if (!closingLock.owns_lock())
            return;
        while (isPending->exchange(false))
            DeliverSurpriseRemoval();
    }
}

void CGigEDevice::DeliverSurpriseRemoval() {
    LogTrace(DeviceLogCategory(), lvNotice, "Device removal for '%s'.", m_Info.GetFullName().c_str());
    if (m_bSurpriseRemoved.exchange(true))
        return;
    std::shared_ptr<CSurpriseRemovalController> controller;
    {
        const Lock memberLock(m_memberLock);
        controller = m_pSurpriseRemovalController;
    }
    if (controller != nullptr)
        controller->FireCallbacks(this);
}

void CGigEDevice::CreateNodemapFromXmlData(const std::vector<std::uint8_t> &data, const StringList_t &injectedXml,
                                           bool /*extractChunkData*/) {
    const Lock lock(m_memberLock);
    if (IsOpen())
        throw LOGICAL_ERROR_EXCEPTION("Device '%s' already open.", m_Info.GetFullName().c_str());
    GenApi::CNodeMapFactory factory = MakeNodeMapFactory(data, injectedXml);
    m_CameraNodeMap._Attach(factory.CreateNodeMap("Device"));
    if (!m_CameraNodeMap._Connect(m_pPort.get(), DevicePortName))
        LogTrace(DeviceLogCategory(), lvWarning, "The description of '%s' has no port '%s'.",
                 m_Info.GetFullName().c_str(), DevicePortName);
}

namespace {

void BuildNodeMap(CGigEDevice &device, const CQuorelGigEDeviceInfo &info) {
    std::vector<std::uint8_t> description;
    XmlFileProviderPrivateImpl().ProvideXmlFileRaw(info, description);
    // A device must not make us open files of this computer.
    if (NamesFile(description))
        throw RUNTIME_EXCEPTION("The device provides the name of a file instead of a description");
    device.CreateNodemapFromXmlData(description, StringList_t(), false);
}

} // namespace

std::unique_ptr<CGigEDevice> CreateGigEDevice(const CQuorelGigEDeviceInfo &info) {
    auto device = std::make_unique<CGigEDevice>(info);
    try {
        BuildNodeMap(*device, info);
    } catch (const std::exception &e) {
        LogTrace(DeviceLogCategory(), lvWarning, "Device '%s' has no features: %s", info.GetFullName().c_str(),
                 e.what());
    }
    return device;
}

} // namespace Corvo
