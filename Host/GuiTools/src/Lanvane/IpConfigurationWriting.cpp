// IpConfigurationWidget: writing a configuration.

#include "Base/GCException.h"
#include "CorvoQtBase/GevGuiHelper.h"
#include "CorvoQtBase/errorhandling.h"
#include "Lanvane/AddressRules.h"
#include "Lanvane/IpConfigurationParts.h"
#include "Lanvane/WaitIndication.h"
#include "MinimalCorvoGigETL/ICorvoGigEDevice.h"

#include <QDebug>
#include <QHostAddress>
#include <QScopedValueRollback>

using namespace Corvo;

bool IpConfigurationWidget::writeConfiguration(const CQuorelGigEDeviceInfo &device) {
    if (broadcastConfiguration(macOf(device)))
        return true;
    qDebug() << "Broadcast Configuration failed! Trying unicast configuration.";
    return unicastConfiguration(displayText(device.GetIpAddress()));
}

namespace {

using OptionalMode = std::optional<commissioning::Mode>;

bool isPersistent(OptionalMode mode) { return mode == commissioning::Mode::Static; }
bool isDhcp(OptionalMode mode) { return mode == commissioning::Mode::Dhcp; }

/// The number a device stores. Link-local stays enabled always: it is every device's last resort.
QByteArray numberOf(OptionalMode mode) {
    return QByteArray::number(4u | (isPersistent(mode) ? 1u : 0u) | (isDhcp(mode) ? 2u : 0u));
}

bool hasAddressChanges(const commissioning::Change &change) {
    return change.addressDiffers || change.maskDiffers || change.gatewayDiffers;
}

AddressTexts addressesOf(const commissioning::Change &change) {
    return {QHostAddress(change.address).toString(), QHostAddress(change.mask).toString(),
            QHostAddress(change.gateway).toString()};
}

} // namespace

void IpConfigurationWidget::storeMode(const QString &mac) {
    m_pDeviceLister->updateDeviceInfo(bytes(mac), numberOf(m_Change.mode), nullptr, nullptr, nullptr, false);
}

void IpConfigurationWidget::storeAddresses(const QString &mac) {
    const AddressTexts content = addressesOf(m_Change);
    m_pDeviceLister->updateDeviceInfo(bytes(mac), nullptr, bytes(content.ipAddress), bytes(content.netmask),
                                      bytes(content.defaultGateway), false);
}

bool IpConfigurationWidget::restartAndAwait(const QString &mac) {
    m_pDeviceLister->Tl().RestartIpConfiguration(gc(mac));
    return waitForDevice(mac);
}

bool IpConfigurationWidget::broadcastConfiguration(const QString &mac) {
    const QScopedValueRollback<int> busy(m_BusyDepth, m_BusyDepth + 1);
    const WaitCursor cursor;
    bool saved = false;
    guarded("broadcastConfiguration", [&] { saved = sendBroadcastConfiguration(mac); });
    return saved;
}

bool IpConfigurationWidget::sendBroadcastConfiguration(const QString &mac) {
    const AddressTexts content = addressesOf(m_Change);
    const QByteArray macText = bytes(mac);
    if (!m_Change.mode) {
        TRACE(Error, "Invalid addresstype for MAC=%s! Don't know which addressing to use.", macText.constData());
        return false;
    }
    switch (*m_Change.mode) {
    case commissioning::Mode::Static:
        TRACE(Progress,
              "Trying broadcast ip config for MAC=%s setting static IP (NewIP=%s; NewNetmask=%s; NewGateway=%s;).",
              macText.constData(), bytes(content.ipAddress).constData(), bytes(content.netmask).constData(),
              bytes(content.defaultGateway).constData());
        break;
    case commissioning::Mode::Dhcp:
        TRACE(Progress, "Trying broadcast ip config for MAC=%s setting DHCP.", macText.constData());
        break;
    case commissioning::Mode::Auto:
        TRACE(Progress, "Trying broadcast ip config for MAC=%s setting AutoIP/LLA.", macText.constData());
        break;
    }
    processEventsWithoutUser(); // what follows blocks for up to 3 seconds
    if (!m_pDeviceLister->Tl().BroadcastIpConfiguration(gc(mac), isPersistent(m_Change.mode), isDhcp(m_Change.mode),
                                                        gc(content.ipAddress), gc(content.netmask),
                                                        gc(content.defaultGateway), String_t())) {
        TRACE(Warning,
              "Failed to change IP configuration via broadcast for MAC=%s. This is not an error. The device may not "
              "support broadcast ip configuration.",
              macText.constData());
        return false;
    }
    TRACE(Progress, "Successfully changed IP configuration via broadcast for MAC=%s.", macText.constData());
    if (m_Change.modeDiffers)
        storeMode(mac);
    if (hasAddressChanges(m_Change))
        storeAddresses(mac);

    TRACE(Progress, "Restarting IP configuration and waiting for rediscovery for MAC=%s.", macText.constData());
    if (!restartAndAwait(mac)) {
        TRACE(Warning, "Failed to rediscover the device with MAC=%s.", macText.constData());
        m_SaveReport = QStringLiteral("The settings were sent, but the camera did not come back.");
        throw RUNTIME_EXCEPTION("Failed to discover reconfigured device");
    }
    TRACE(Progress, "Successfully rediscovered MAC=%s.", macText.constData());
    return true;
}

bool IpConfigurationWidget::unicastConfiguration(const QString &oldIpAddress) {
    const QScopedValueRollback<int> busy(m_BusyDepth, m_BusyDepth + 1);
    bool saved = false;
    guarded("unicastConfiguration", [&] { saved = sendUnicastConfiguration(oldIpAddress); });
    closeDevice();
    return saved;
}

bool IpConfigurationWidget::sendUnicastConfiguration(const QString &oldIpAddress) {
    const QByteArray oldIp = bytes(oldIpAddress);
    TRACE(Progress, "Trying open device with old IP=%s to change IP configuration via unicast.", oldIp.constData());
    if (!openDevice(oldIpAddress)) {
        TRACE(Progress, "Could not open device with old IP=%s to change IP configuration via unicast.",
              oldIp.constData());
        return false;
    }
    const CQuorelGigEDeviceInfo opened(m_pDevice->GetDeviceInfo());
    const QString mac = macOf(opened);
    TRACE(Progress,
          "Successfully opened device with old IP=%s; Netmask=%s; Gateway=%s; IPConfig='%s' to change IP "
          "configuration via unicast.",
          oldIp.constData(), opened.GetSubnetMask().c_str(), opened.GetDefaultGateway().c_str(),
          bytes(formatIPConfigurationOf(opened)).constData());
    const WaitCursor cursor;
    writeToOpenDevice(oldIpAddress, mac);
    TRACE(Progress, "Closing device with old IP=%s.", oldIp.constData());
    closeDevice();
    TRACE(Progress, "Finished configuring device with old IP=%s.", oldIp.constData());
    if (!restartAndAwait(mac)) {
        TRACE(Warning, "Failed to rediscover the configured device with old IP=%s.", oldIp.constData());
        m_SaveReport = QStringLiteral("The settings were sent, but the camera did not come back.");
        throw RUNTIME_EXCEPTION("Failed to discover reconfigured device");
    }
    return true;
}

void IpConfigurationWidget::writeToOpenDevice(const QString &oldIpAddress, const QString &mac) {
    const AddressTexts content = addressesOf(m_Change);
    const QByteArray oldIp = bytes(oldIpAddress);
    if (m_Change.modeDiffers) {
        if (!m_Change.mode) {
            TRACE(Error, "Invalid addresstype for old IP=%s! Don't know which addressing to use.", oldIp.constData());
            throw RUNTIME_EXCEPTION("No IP configuration is chosen.");
        }
        switch (*m_Change.mode) {
        case commissioning::Mode::Static:
            TRACE(Progress, "Setting ip config for device with old IP=%s to static IP.", oldIp.constData());
            break;
        case commissioning::Mode::Dhcp:
            TRACE(Progress, "Setting ip config for device with old IP=%s to DHCP.", oldIp.constData());
            break;
        case commissioning::Mode::Auto:
            TRACE(Progress, "Setting ip config for device with old IP=%s to AutoIP/LLA", oldIp.constData());
            break;
        }
        m_pDevice->ChangeIpConfiguration(isPersistent(m_Change.mode), isDhcp(m_Change.mode));
        storeMode(mac);
    }
    if (!hasAddressChanges(m_Change))
        return;
    if (!isIPAddressValidForDevice(content.ipAddress)) {
        TRACE(Error, "Invalid new IP address '%s' for device with old IP=%s!", bytes(content.ipAddress).constData(),
              oldIp.constData());
        throw RUNTIME_EXCEPTION(
            "Invalid IP address. IP addresses 224.0.0.0 to 255.255.255.255 and 127.0.0.1 are not allowed.");
    }
    TRACE(Progress, "Setting persitent IP address for device with old IP=%s (NewIP=%s; NewNetmask=%s; NewGateway=%s;).",
          oldIp.constData(), bytes(content.ipAddress).constData(), bytes(content.netmask).constData(),
          bytes(content.defaultGateway).constData());
    m_pDevice->SetPersistentIpAddress(gc(content.ipAddress), gc(content.netmask), gc(content.defaultGateway));
    storeAddresses(mac);
}

bool IpConfigurationWidget::waitForDevice(const QString &mac) {
    const QScopedValueRollback<int> busy(m_BusyDepth, m_BusyDepth + 1);
    const WaitBox box(QStringLiteral("Camera restarts its IP configuration cycle.\nWaiting until the device has been "
                                     "discovered again..."),
                      this);
    bool found = false;
    guarded("waitForDevice", [&] {
        DeviceLister lister;
        for (int round = 0; round < m_Patience.rounds && !found; ++round) {
            pauseWithoutUser(m_Patience.pause_ms);
            lister.discoverAllDevices();
            for (const CDeviceInfo &device : lister.devices())
                found = found || macOf(device).compare(mac, Qt::CaseInsensitive) == 0;
        }
    });
    return found;
}

void IpConfigurationWidget::closeDevice() {
    if (!m_pDevice)
        return;
    ICorvoGigEDevice *device = m_pDevice;
    m_pDevice = nullptr;
    const auto report = [this](const GenICam::GenericException &error, const char *what) {
        showException("closeDevice", error, QString::fromLatin1(what), this);
    };
    try {
        if (device->IsOpen())
            device->Close();
    } catch (const GenICam::GenericException &error) {
        report(error, "Failed to close device");
    }
    try {
        m_pDeviceLister->Tl().DestroyDevice(device);
    } catch (const GenICam::GenericException &error) {
        report(error, "Failed to destroy device");
    }
}
