// IpConfigurationWidget: the ways into the commissioning library that write a configuration.

#include "Lanvane/IpConfigurationParts.h"
#include "commissioning/Rediscovery.h"
#include "commissioning/Saving.h"

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
    m_LastSave = configure(operationContext(), m_Change);
    return m_LastSave.success;
}

bool IpConfigurationWidget::broadcastConfiguration(const QString &mac) {
    m_Change.device.SetMacAddress(gc(mac));
    const commissioning::Context context = operationContext();
    return commissioning::Saving(context, m_Change).broadcast();
}

bool IpConfigurationWidget::unicastConfiguration(const QString &oldIpAddress) {
    m_Change.device.SetIpAddress(gc(oldIpAddress));
    const commissioning::Context context = operationContext();
    return commissioning::Saving(context, m_Change).unicast();
}

bool IpConfigurationWidget::waitForDevice(const QString &mac) {
    return commissioning::waitForDevice(operationContext(), mac.toStdString()).has_value();
}

void IpConfigurationWidget::closeDevice() { m_Connection.close(); }
