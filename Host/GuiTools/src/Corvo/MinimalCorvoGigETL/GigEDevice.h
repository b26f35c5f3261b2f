#pragma once

#include "GenApi/NodeCallback.h"
#include "MinimalCorvoGigETL/ControlChannelPtr.h"
#include "MinimalCorvoGigETL/ControlChannelStatisticPort.h"
#include "MinimalCorvoGigETL/CorvoDevicePrivateImpl.h"
#include "MinimalCorvoGigETL/GigEParams.h"
#include "MinimalCorvoGigETL/GxPort.h"
#include "MinimalCorvoGigETL/ICorvoGigEDevice.h"
#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"

#include <atomic>
#include <exception>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <utility>

namespace Corvo {

/// A GigE Vision camera: its control channel while it is open, its node map and the parameters of the connection.
///
/// Any thread may call; OnSurpriseRemoval comes on a thread of the control channel. Lock order: the closing lock, the
/// lock of the removal controller, m_memberLock, the node maps' locks, those of the ports and m_channelLock, the
/// channel's own. Node callbacks run below the locks of the node maps and so never take m_memberLock. The channel holds
/// a lock of its own while it delivers the removal, so its callback is never changed with m_memberLock held.
class CGigEDevice final : public CCorvoDevicePrivateImpl<ICorvoGigEDevice>,
                          public Gx::ControlChannel::SurpriseRemovalCallback {
public:
    /// \throws RuntimeException when the parameters of the connection cannot be loaded.
    explicit CGigEDevice(const CQuorelGigEDeviceInfo &info);
    /// Closes the device when it is open.
    ~CGigEDevice() override;

    void Open(AccessModeSet modes) override;
    void Close() override;
    bool IsOpen() const override;
    const CDeviceInfo &GetDeviceInfo() const override;
    AccessModeSet AccessMode() const override;
    IEventGrabber *GetEventGrabber() override { return nullptr; }
    IStreamGrabber *GetStreamGrabber(std::uint32_t /*index*/) override { return nullptr; }
    GenApi::INodeMap *GetNodeMap() override;
    std::uint32_t GetNumStreamGrabberChannels() const override { return 1; }
    GenApi::INodeMap *GetTLNodeMap() override;

    DeviceCallbackHandle RegisterRemovalCallback(DeviceCallback &callback) override;
    bool DeregisterRemovalCallback(DeviceCallbackHandle handle) override;

    IChunkParser *CreateChunkParser() override { return nullptr; }
    void DestroyChunkParser(IChunkParser * /*pChunkParser*/) override {}
    IEventAdapter *CreateEventAdapter() override { return nullptr; }
    void DestroyEventAdapter(IEventAdapter * /*pEventAdapter*/) override {}
    ISelfReliantChunkParser *CreateSelfReliantChunkParser() override { return nullptr; }
    void DestroySelfReliantChunkParser(ISelfReliantChunkParser * /*pChunkParser*/) override {}

    void ChangeIpConfiguration(bool persistent, bool dhcp) override;
    void GetPersistentIpAddress(String_t &ip, String_t &mask, String_t &gateway) override;
    void SetPersistentIpAddress(const String_t &ip, const String_t &mask, const String_t &gateway) override;

    /// Runs the removal callbacks, once, unless the device is being closed.
    void OnSurpriseRemoval() noexcept override;

    void CreateNodemapFromXmlData(const std::vector<std::uint8_t> &data, const StringList_t &injectedXml,
                                  bool extractChunkData) override;

private:
    class CSurpriseRemovalController;
    class COpening;

    void LoadTLParams();
    void RegisterTLParamCallbacks();

    void OpenChannel(const AccessModeSet &modes);
    void AttachChannel(ControlChannelPtr channel, const AccessModeSet &modes);
    void ImposeWriteTimeoutAccess(GenApi::EAccessMode mode);
    void RegisterTLHeartbeatCallback();
    void RegisterCameraHeartbeatCallback();
    bool HasLiveChannel();
    GenApi::EAccessMode AccessModeOf(const GenApi::CIntegerPtr &feature);
    bool SetFeatures(std::initializer_list<std::pair<const GenApi::CIntegerPtr &, std::uint32_t>> values);

    /// Closes whatever is open and never fails half-way. \returns what is to be reported when all is closed.
    std::exception_ptr InternalClose() noexcept;
    void EndRemovalNotification();
    void DeregisterHeartbeatCallbacks();
    void InvalidateDeviceNode();
    std::exception_ptr DetachChannel();

    std::shared_ptr<CSurpriseRemovalController> OpenController(const char *operation) const;
    void CheckControlAccess(const char *operation) const;
    void DeliverSurpriseRemoval();

    /// \returns false, without a call, while the device is closed. For node callbacks, which call nothing else inside.
    template <class Function> bool WithChannel(Function function);
    void SetChannelProperties(GenApi::INode *pNode, std::initializer_list<std::uint32_t> tags);
    void OnInvalidateTlParamReadTimeout(GenApi::INode *pNode);
    void OnInvalidateTlParamWriteTimeout(GenApi::INode *pNode);
    void OnInvalidateTlParamMaxRetryCountRead(GenApi::INode *pNode);
    void OnInvalidateTlParamMaxRetryCountWrite(GenApi::INode *pNode);
    void OnInvalidateTlParamEnableCommandDuplication(GenApi::INode *pNode);
    void OnInvalidateHeartbeatTimeout(GenApi::INode *pNode);
    void SyncHeartbeatTimeouts(GenApi::INode *pNode);
    void SetChannelHeartbeatTimeout(std::int64_t timeout_ms);

    mutable std::recursive_mutex m_memberLock;
    /// Shared with OnSurpriseRemoval, whose callbacks may destroy the device.
    std::shared_ptr<std::recursive_mutex> m_closingLock;
    /// A loss that is not delivered yet. Shared likewise; cleared with the closing lock held.
    std::shared_ptr<std::atomic<bool>> m_isRemovalPending;
    const CQuorelGigEDeviceInfo m_Info;
    std::shared_ptr<CSurpriseRemovalController> m_pSurpriseRemovalController;
    const std::unique_ptr<CGxPort> m_pPort;
    const std::unique_ptr<CControlChannelStatisticPort> m_pControlChannelStatisticPort;
    AccessModeSet m_AccessMode;
    /// Changed with m_memberLock and m_channelLock held, so that either will do for its use.
    ControlChannelPtr m_pControlChannel;
    std::mutex m_channelLock;
    bool m_isOpening = false;
    std::atomic<bool> m_bSurpriseRemoved{false};
    CTLParamsNodeMapPtr m_pTLParamsNodeMap;
    GenApi::CNodeMapRefT<Quorel_GigEImplParams::CGigEImplParams_Params> m_CameraNodeMap;
    GenApi::CallbackHandleType m_CameraParamHeartbeatTimeoutCallbackHandle = 0;
    GenApi::CallbackHandleType m_TLParamHeartbeatTimeoutCallbackHandle = 0;
};

/// Makes the device and builds its node map from the description that the camera provides. A camera without usable
/// description is traced and gets no node map; it can be opened and configured all the same.
std::unique_ptr<CGigEDevice> CreateGigEDevice(const CQuorelGigEDeviceInfo &info);

} // namespace Corvo
