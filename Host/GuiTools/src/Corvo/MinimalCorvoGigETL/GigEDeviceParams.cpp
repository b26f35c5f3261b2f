// How the parameters of the connection and the camera's heartbeat timeout reach the control channel.

#include "MinimalCorvoGigETL/DeviceLog.h"
#include "MinimalCorvoGigETL/GigEDevice.h"
#include "MinimalCorvoGigETL/GxStatusException.h"

#include "Base/GCException.h"

#include <cassert>
#include <utility>

namespace Corvo {

namespace {

using Gx::ControlChannel;

/// Sets the value unless it is there already. \returns whether it was set.
bool SetIfDifferent(GenApi::IInteger &node, std::int64_t value) {
    if (GenApi::IsReadable(node) && node.GetValue() == value)
        return false;
    node.SetValue(value);
    return true;
}

} // namespace

void CGigEDevice::RegisterTLParamCallbacks() {
    const auto &params = *m_pTLParamsNodeMap;
    const auto add = [this](GenApi::IValue &feature, void (CGigEDevice::*callback)(GenApi::INode *)) {
        GenApi::Register(feature.GetNode(), *this, callback);
    };
    add(*params.ReadTimeout, &CGigEDevice::OnInvalidateTlParamReadTimeout);
    add(*params.WriteTimeout, &CGigEDevice::OnInvalidateTlParamWriteTimeout);
    add(*params.MaxRetryCountRead, &CGigEDevice::OnInvalidateTlParamMaxRetryCountRead);
    add(*params.MaxRetryCountWrite, &CGigEDevice::OnInvalidateTlParamMaxRetryCountWrite);
    add(*params.CommandDuplicationEnable, &CGigEDevice::OnInvalidateTlParamEnableCommandDuplication);
}

template <class Function> bool CGigEDevice::WithChannel(Function function) {
    const std::lock_guard<std::mutex> lock(m_channelLock);
    if (m_pControlChannel == nullptr)
        return false;
    function(*m_pControlChannel);
    return true;
}

void CGigEDevice::SetChannelProperties(GenApi::INode *pNode, std::initializer_list<std::uint32_t> tags) {
    const GenApi::CIntegerPtr parameter(pNode);
    assert(parameter.IsValid());
    const auto value = static_cast<std::uint32_t>(parameter->GetValue());
    WithChannel([&](ControlChannel &channel) {
        for (const std::uint32_t tag : tags)
            (void)channel.SetProperty(tag, &value, sizeof value);
    });
}

void CGigEDevice::OnInvalidateTlParamReadTimeout(GenApi::INode *pNode) {
    SetChannelProperties(pNode, {ControlChannel::ReadRegTimeout, ControlChannel::ReadMemTimeout});
}

void CGigEDevice::OnInvalidateTlParamWriteTimeout(GenApi::INode *pNode) {
    SetChannelProperties(pNode, {ControlChannel::WriteRegTimeout, ControlChannel::WriteMemTimeout});
}

void CGigEDevice::OnInvalidateTlParamMaxRetryCountRead(GenApi::INode *pNode) {
    SetChannelProperties(pNode, {ControlChannel::MaxRetryCountRead});
}

void CGigEDevice::OnInvalidateTlParamMaxRetryCountWrite(GenApi::INode *pNode) {
    SetChannelProperties(pNode, {ControlChannel::MaxRetryCountWrite});
}

void CGigEDevice::OnInvalidateTlParamEnableCommandDuplication(GenApi::INode *pNode) {
    const GenApi::CBooleanPtr parameter(pNode);
    assert(parameter.IsValid());
    const bool isEnabled = parameter->GetValue();
    WithChannel([&](ControlChannel &channel) { (void)channel.EnableCommandDuplication(isEnabled); });
}

// The heartbeat callbacks change the other node map, so they run without the lock of their own: two threads that each
// change one side would else wait for each other.

void CGigEDevice::RegisterTLHeartbeatCallback() {
    const std::lock_guard<std::recursive_mutex> lock(m_memberLock);
    assert(m_TLParamHeartbeatTimeoutCallbackHandle == 0);
    m_TLParamHeartbeatTimeoutCallbackHandle =
        GenApi::Register(m_pTLParamsNodeMap->HeartbeatTimeout->GetNode(), *this,
                         &CGigEDevice::OnInvalidateHeartbeatTimeout, GenApi::cbPostOutsideLock);
}

/// Whether the device still answers, which is asked of it. With m_memberLock held.
bool CGigEDevice::HasLiveChannel() {
    constexpr std::uint32_t address = GEV_REG_VERSION;
    std::uint32_t version = 0;
    return m_pControlChannel != nullptr && m_pControlChannel->ReadReg(&address, &version, 1) == GX_SUCCESS;
}

/// A description that cannot tell, as when a register of a condition is refused, does not offer the feature. When the
/// device was lost over the question the failure is passed on, which alone knows why. With m_memberLock held.
GenApi::EAccessMode CGigEDevice::AccessModeOf(const GenApi::CIntegerPtr &feature) {
    try {
        return feature.IsValid() ? feature->GetAccessMode() : GenApi::NI;
    } catch (const GenICam::GenericException &e) {
        if (!HasLiveChannel())
            throw;
        tracelog::LogTrace(DeviceLogCategory(), tracelog::lvWarning, "Feature '%s' cannot be used: %s",
                           feature->GetNode()->GetName().c_str(), e.GetDescription());
        return GenApi::NI;
    }
}

void CGigEDevice::RegisterCameraHeartbeatCallback() {
    if (!GenApi::IsImplemented(AccessModeOf(m_CameraNodeMap.GevHeartbeatTimeout)))
        return;
    assert(m_CameraParamHeartbeatTimeoutCallbackHandle == 0);
    m_CameraParamHeartbeatTimeoutCallbackHandle =
        GenApi::Register(m_CameraNodeMap.GevHeartbeatTimeout->GetNode(), *this,
                         &CGigEDevice::OnInvalidateHeartbeatTimeout, GenApi::cbPostOutsideLock);
}

namespace {

/// \param handle 0 when nothing is registered; 0 afterwards in any case.
void DeregisterCallback(const GenApi::CIntegerPtr &feature, GenApi::CallbackHandleType &handle, const char *name) {
    if (handle == 0)
        return;
    try {
        feature->GetNode()->DeregisterCallback(std::exchange(handle, 0));
    } catch (const GenICam::GenericException &e) {
        tracelog::LogTrace(DeviceLogCategory(), tracelog::lvWarning,
                           "Unexpected exception during unregister %s on close. (Err='%s')", name, e.GetDescription());
    }
}

} // namespace

void CGigEDevice::DeregisterHeartbeatCallbacks() {
    DeregisterCallback(m_CameraNodeMap.GevHeartbeatTimeout, m_CameraParamHeartbeatTimeoutCallbackHandle,
                       "CameraHeartbeatTimeout");
    DeregisterCallback(m_pTLParamsNodeMap->HeartbeatTimeout, m_TLParamHeartbeatTimeoutCallbackHandle,
                       "TLParamHeartbeatTimeout");
}

void CGigEDevice::OnInvalidateHeartbeatTimeout(GenApi::INode *pNode) {
    if (!WithChannel([](ControlChannel &) {}))
        return;
    try {
        SyncHeartbeatTimeouts(pNode);
    } catch (const GenICam::GenericException &e) {
        tracelog::LogTrace(DeviceLogCategory(), tracelog::lvWarning, "Could not sync heartbeat timeouts '%s'.",
                           e.GetDescription());
    }
}

/// What it sets calls it again for the other side; it ends there because the values then agree.
void CGigEDevice::SyncHeartbeatTimeouts(GenApi::INode *pNode) {
    const GenApi::CIntegerPtr changed(pNode);
    assert(changed.IsValid());
    if (!GenApi::IsReadable(changed))
        return;
    const std::int64_t timeout_ms = changed->GetValue();
    const GenApi::CIntegerPtr &parameter = m_pTLParamsNodeMap->HeartbeatTimeout;
    const GenApi::CIntegerPtr &feature = m_CameraNodeMap.GevHeartbeatTimeout;
    const bool isParameter = pNode == parameter->GetNode();
    const bool isParameterSet = !isParameter && SetIfDifferent(*parameter, timeout_ms);
    // Its own callback does not run again while this runs within it, as when the camera coerces what it was given.
    if (isParameter || isParameterSet)
        SetChannelHeartbeatTimeout(timeout_ms);
    if (!GenApi::IsWritable(feature) || pNode == feature->GetNode())
        return;
    const bool isFeatureSet = SetIfDifferent(*feature, timeout_ms);
    assert(!(isParameterSet && isFeatureSet) &&
           "This callback shoud change either the TL xor the cam timeoutvalue or none in case of an Invalidate.");
    (void)isFeatureSet;
}

void CGigEDevice::SetChannelHeartbeatTimeout(std::int64_t timeout_ms) {
    GXSTATUS status = GX_SUCCESS;
    WithChannel(
        [&](ControlChannel &channel) { status = channel.SetHeartbeatTimeout(static_cast<std::uint32_t>(timeout_ms)); });
    if (status != GX_SUCCESS)
        tracelog::LogTrace(DeviceLogCategory(), tracelog::lvWarning, "Heartbeat timeout of %lld ms: %s",
                           static_cast<long long>(timeout_ms), GxStatusText(status).c_str());
}

} // namespace Corvo
