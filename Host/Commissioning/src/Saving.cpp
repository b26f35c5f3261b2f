#include "commissioning/Saving.h"

#include "Base/GCException.h"
#include "Judgement.h"
#include "Registers.h"
#include "ResultText.h"
#include "Undertake.h"
#include "Writing.h"
#include "commissioning/AddressText.h"
#include "commissioning/Connection.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Rediscovery.h"
#include "commissioning/Search.h"
#include "commissioning/SmallChanges.h"

namespace commissioning {

using namespace Corvo;

const Result &Saving::run() {
    m_Result.success = broadcast();
    if (!m_Result.success && !Judgement(m_Change, m_Result).isStored()) {
        m_Context.trace.debug("Broadcast Configuration failed! Trying unicast configuration.");
        m_Result.success = unicast();
    }
    if (!m_Result.success)
        inspect();
    m_Result.text = describe(m_Change, m_Result);
    return m_Result;
}

bool Saving::broadcast() {
    return m_Context.guarded("broadcastConfiguration", [this] {
        const auto indication = m_Context.interaction.begin(Step::Broadcast);
        return sendBroadcast();
    });
}

bool Saving::sendBroadcast() {
    if (!Writing(m_Context, m_Change, &m_Result).broadcast())
        return false;
    const String_t mac = m_Change.device.GetMacAddress();
    m_Context.trace.progress("Restarting IP configuration and waiting for rediscovery for MAC=%s.", mac.c_str());
    if (!restartAndAwait()) {
        m_Context.trace.warning("Failed to rediscover the device with MAC=%s.", mac.c_str());
        throw RUNTIME_EXCEPTION("Failed to discover reconfigured device");
    }
    m_Context.trace.progress("Successfully rediscovered MAC=%s.", mac.c_str());
    return verify();
}

bool Saving::unicast() {
    const bool saved = m_Context.guarded("unicastConfiguration", [this] { return sendUnicast(); });
    m_Context.connection.close();
    return saved;
}

bool Saving::sendUnicast() {
    if (!Writing(m_Context, m_Change, &m_Result).unicast())
        return false;
    if (!restartAndAwait()) {
        m_Context.trace.warning("Failed to rediscover the configured device with old IP=%s.",
                                m_Change.device.GetIpAddress().c_str());
        throw RUNTIME_EXCEPTION("Failed to discover reconfigured device");
    }
    return verify();
}

/// Where it can be asked when no broadcast is heard; of the other modes nobody knows.
Address Saving::expectedAddress() const { return m_Change.mode == Mode::Static ? m_Change.address : 0; }

bool Saving::restartAndAwait() {
    const String_t mac = m_Change.device.GetMacAddress();
    const Judgement judgement(m_Change, m_Result);
    m_Context.layer.RestartIpConfiguration(mac);
    m_Result.now = waitForDevice(m_Context, mac.c_str(), expectedAddress());
    // The restart is one datagram, which may be lost, and some cameras forget it.
    for (int i = 0; i < m_Context.patience.restarts && m_Result.now && !judgement.hasTaken(); ++i) {
        m_Context.trace.warning("MAC=%s is back with the old settings. Restarting its IP configuration again.",
                                mac.c_str());
        m_Context.layer.RestartIpConfiguration(mac);
        m_Result.now = waitForDevice(m_Context, mac.c_str(), expectedAddress());
    }
    return m_Result.now.has_value();
}

void Saving::readBack() {
    Registers registers{*m_Result.now};
    m_Result.stored = registers.readStored();
    if (CDeviceInfo *device = findByMac(m_Context.devices, m_Change.device.GetMacAddress().c_str());
        device && m_Result.stored)
        setStoredAddresses(*device, *m_Result.stored);
}

bool Saving::verify() {
    follow(m_Context, *m_Result.now, false);
    readBack();
    m_Result.verification = m_Result.stored ? Verification::StoredRead : Verification::AddressSeen;
    const bool isDone = Judgement(m_Change, m_Result).isDone();
    if (!isDone)
        m_Context.trace.warning("MAC=%s is back without the settings it was sent.",
                                m_Change.device.GetMacAddress().c_str());
    else if (m_Result.path == Path::Broadcast)
        keepName(m_Context, m_Change.device, &m_Result);
    return isDone;
}

void Saving::inspect() {
    const String_t mac = m_Change.device.GetMacAddress();
    const auto indication = m_Context.interaction.begin(Step::Write);
    m_Context.guarded("inspect", [&] {
        m_Result.verification = Verification::None;
        m_Result.stored.reset();
        m_Result.now = lookFor(m_Context, mac.c_str(), expectedAddress());
        if (m_Result.now) {
            follow(m_Context, *m_Result.now, true);
            readBack();
        } else if (CDeviceInfo *device = findByMac(m_Context.devices, mac.c_str())) {
            testAccessibility(m_Context.layer, *device);
        }
        return true;
    });
    m_Context.interaction.updated(mac.c_str(), std::nullopt);
}

Result configure(const Context &context, const Change &change) {
    Settings wanted{change.mode, 0, 0, 0, cameraOf(change.device).name};
    if (change.mode == Mode::Static) {
        wanted.address = change.address;
        wanted.mask = change.mask;
        wanted.gateway = change.gateway;
    }
    return undertake(context, change.device, "set", wanted,
                     [&](const Context &inner) { return Saving(inner, change).run(); });
}

void keepName(const Context &context, const CQuorelGigEDeviceInfo &before, Result *pResult) {
    const bool isGone = before.IsUserDefinedNameAvailable() && !before.GetUserDefinedName().empty() &&
                        pResult->now->GetUserDefinedName().empty();
    if (!isGone)
        return;
    context.trace.warning("MAC=%s has lost its user-defined name '%s'.", before.GetMacAddress().c_str(),
                          before.GetUserDefinedName().c_str());
    // One that cannot be read cannot be written either.
    pResult->isNameLost =
        !pResult->stored || !rename(context, *pResult->now, before.GetUserDefinedName().c_str()).success;
}

} // namespace commissioning
