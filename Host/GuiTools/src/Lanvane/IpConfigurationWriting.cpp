// IpConfigurationWidget: the ways into the commissioning library that write a configuration.

#include "Lanvane/IpConfigurationParts.h"
#include "commissioning/Rediscovery.h"
#include "commissioning/Saving.h"
#include "commissioning/SmallChanges.h"

#include <QTimer>

using namespace Corvo;

commissioning::Context IpConfigurationWidget::operationContext() {
    return {m_pDeviceLister->Tl(),
            m_pDeviceLister->devices(),
            m_Connection,
            m_Interaction,
            commissioning::Tracer(GetIPConfigBaseCatID()),
            m_Patience,
            &m_Journal};
}

bool IpConfigurationWidget::writeConfiguration(const CQuorelGigEDeviceInfo &device) {
    m_Change.device = device;
    // Until it has ended: it is told less when it is cancelled where nobody expects it.
    m_LastSave.text = "It is not known what was sent.";
    const commissioning::Context context = operationContext();
    m_Interaction.run([&] { m_LastSave = configure(context, m_Change); });
    return m_LastSave.success;
}

bool IpConfigurationWidget::broadcastConfiguration(const QString &mac) {
    m_Change.device.SetMacAddress(gc(mac));
    const commissioning::Context context = operationContext();
    bool isSaved = false;
    m_Interaction.run([&] { isSaved = commissioning::Saving(context, m_Change).broadcast(); });
    return isSaved;
}

bool IpConfigurationWidget::unicastConfiguration(const QString &oldIpAddress) {
    m_Change.device.SetIpAddress(gc(oldIpAddress));
    const commissioning::Context context = operationContext();
    bool isSaved = false;
    m_Interaction.run([&] { isSaved = commissioning::Saving(context, m_Change).unicast(); });
    return isSaved;
}

bool IpConfigurationWidget::waitForDevice(const QString &mac) {
    const commissioning::Context context = operationContext();
    bool isBack = false;
    m_Interaction.run([&] { isBack = commissioning::waitForDevice(context, mac.toStdString()).has_value(); });
    return isBack;
}

void IpConfigurationWidget::renameDevice(const QString &mac, const QString &name) {
    constexpr int Retry_ms = 100;
    if (m_BusyDepth > 0) { // the list is the operation's
        QTimer::singleShot(Retry_ms, this, [=] { renameDevice(mac, name); });
        return;
    }
    const OptionalDevice device = deviceOf(mac);
    if (!device)
        return;
    const Busy busy(m_BusyDepth);
    const commissioning::Context context = operationContext();
    m_Notice = {};
    commissioning::Result result;
    guarded("renameDevice", [&] {
        if (!m_Interaction.run([&] { result = rename(context, *device, name.toStdString()); }))
            m_Notice = {mac, QStringLiteral("It is not known whether the camera has stored the name.")};
        else if (!result.success)
            showBox(QMessageBox::Critical, QStringLiteral("The name could not be stored."),
                    QString::fromStdString(result.text), QMessageBox::Close);
    });
    if (result.success)
        m_pDeviceLister->setUserDefinedName(mac, name);
    showPatchedInfo(mac);
    updateEditor(); // a save writes the name back that it costs the camera
}

void IpConfigurationWidget::closeDevice() { m_Connection.close(); }

void IpConfigurationWidget::giveUpDevice() {
    m_Interaction.operation().end();
    closeDevice();
}
