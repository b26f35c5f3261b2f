#include "Lanvane/DeviceLister.h"

#include "Base/GCException.h"
#include "Lanvane/DeviceDisplay.h"
#include "MinimalCorvoGigETL/TlFactory.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Search.h"

#include <utility>

using namespace Corvo;

const char *const PropMacAddress = commissioning::PropertyMac;
const char *const PropInterface = commissioning::PropertyInterface;
const char *const PropIfName = commissioning::PropertyInterfaceName;
const char *const PropAccessible = commissioning::PropertyVerdict;

IGigETransportLayer *DeviceLister::s_pTl = nullptr;
QAtomicInt DeviceLister::s_ref(0);

DeviceLister::DeviceLister() { s_ref.ref(); }

DeviceLister::~DeviceLister() {
    if (s_ref.deref() || !s_pTl)
        return;
    try {
        CTlFactory::GetInstance().ReleaseTl(s_pTl);
    } catch (const GenICam::GenericException &) { // The factory has been terminated and the layer with it.
    }
    s_pTl = nullptr;
}

IGigETransportLayer &DeviceLister::Tl() {
    if (!s_pTl) {
        ITransportLayer *layer = CTlFactory::GetInstance().CreateTl("QuorelGigE");
        s_pTl = dynamic_cast<IGigETransportLayer *>(layer);
        if (!s_pTl)
            throw RUNTIME_EXCEPTION("Failed to create transport layer object");
    }
    return *s_pTl;
}

DeviceLister::Content::Content(DeviceInfoList_t devices) : m_Devices(std::move(devices)) {
    for (std::size_t i = 0; i < m_Devices.size(); ++i)
        m_Indices.insert(displayText(m_Devices[i], PropMacAddress), i);
}

void DeviceLister::discoverAllDevices() { m_Content = Content(commissioning::search(Tl())); }

CDeviceInfo *DeviceLister::find(const QString &mac) {
    const auto found = m_Content.m_Indices.constFind(mac);
    return found == m_Content.m_Indices.constEnd() ? nullptr : &m_Content.m_Devices[*found];
}

std::size_t DeviceLister::updateDeviceInfo(const char *pstrMac, const char *pstrIpConfig, const char *pstrIpAddress,
                                           const char *pstrSubnetMask, const char *pstrDefaultGateway,
                                           bool testAccessibility) {
    return commissioning::updateDeviceInfo(Tl(), m_Content.m_Devices, pstrMac, pstrIpConfig, pstrIpAddress,
                                           pstrSubnetMask, pstrDefaultGateway, testAccessibility);
}

void DeviceLister::setUserDefinedName(const QString &mac, const QString &name) {
    CDeviceInfo *const device = find(mac);
    if (!device)
        return;
    device->SetUserDefinedName(name.toUtf8().constData());
    device->ClearAccessFlags(); // an info that was changed is not tested for access
}

bool DeviceLister::ValExistsInMultipartPropertyValue(const String_t &multipartValue, const String_t &value,
                                                     const char *separator) {
    return commissioning::isPartOf(multipartValue, value, separator);
}

std::size_t DeviceLister::mergeProperties(IProperties &props1, const IProperties &props2, const char *pszSeparator,
                                          const StringList_t &propNames, bool allowDuplicates) {
    return commissioning::mergeProperties(props1, props2, pszSeparator, propNames, allowDuplicates);
}

std::size_t DeviceLister::mergeProperties(IProperties &props1, const IProperties &props2, const char *pszSeparator,
                                          bool allowDuplicates) {
    StringList_t names;
    props2.GetPropertyNames(names);
    return mergeProperties(props1, props2, pszSeparator, names, allowDuplicates);
}
