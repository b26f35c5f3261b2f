#pragma once

#include "MinimalCorvo/Container.h"
#include "MinimalCorvoGigETL/IGigETransportLayer.h"

#include <QAtomicInt>
#include <QHash>
#include <QObject>

#include <cstddef>
#include <utility>

/// Property keys that the lister adds to or changes in device infos.
extern const char *const PropMacAddress; ///< "MacAddress"
extern const char *const PropInterface;  ///< "Interface"; several host addresses are joined by ";"
extern const char *const PropIfName;     ///< "IF_~_Name": system names of those interfaces, joined by ";"
extern const char *const PropAccessible; ///< "DEV_~_Accessible": EDeviceAccessiblityInfo as a decimal number

/// The one list of GigE devices that the window shows: one entry for each MAC address, with the host interface's name
/// and an accessibility verdict. To be used by one thread at a time, between CorvoInitialize and CorvoTerminate.
class DeviceLister : public QObject {
    Q_OBJECT

public:
    using DeviceInfoList_t = Corvo::DeviceInfoList;

    DeviceLister();
    /// The last lister releases the transport layer they share.
    ~DeviceLister() override;

    /// The result of the last discovery.
    const DeviceInfoList_t &devices() const { return m_Content.m_Devices; }
    /// For the operations, which keep it up to date; they neither add, remove nor move entries.
    DeviceInfoList_t &devices() { return m_Content.m_Devices; }
    /// Null when it is not in the list.
    Corvo::CDeviceInfo *find(const QString &mac);
    /// A list with what finds its entries; to be made and freed where thousands of them keep nobody waiting.
    class Content {
    public:
        Content() = default;
        explicit Content(DeviceInfoList_t devices);

    private:
        friend class DeviceLister;
        DeviceInfoList_t m_Devices;
        QHash<QString, std::size_t> m_Indices; ///< in the list, by MAC address
    };
    void swap(Content &content) { std::swap(m_Content, content); }

    /// The transport layer that all listers share, created on demand. \throws RuntimeException
    Corvo::IGigETransportLayer &Tl();

    /// Rebuilds the list by a search (commissioning::search).
    /// \throws GenericException what the transport layer raises; the list is then as it was.
    void discoverAllDevices();

    /// Patches the entries of a device without a discovery (commissioning::updateDeviceInfo).
    std::size_t updateDeviceInfo(const char *pstrMac, const char *pstrIpConfig, const char *pstrIpAddress,
                                 const char *pstrSubnetMask, const char *pstrDefaultGateway, bool testAccessibility);

    /// Patches the name of a device that was given another one.
    void setUserDefinedName(const QString &mac, const QString &name);

    /// Whether a value is one of the parts of a multi-part value.
    static bool ValExistsInMultipartPropertyValue(const Corvo::String_t &multipartValue, const Corvo::String_t &value,
                                                  const char *separator);
    /// Appends the values of props2 to the multi-part values of props1, for the keys that both have.
    ///
    /// \param propNames keys to merge; all keys of props2 in the form without.
    /// \param allowDuplicates appends values that are parts already.
    /// \return number of values appended.
    static std::size_t mergeProperties(Corvo::IProperties &props1, const Corvo::IProperties &props2,
                                       const char *pszSeparator, const Corvo::StringList_t &propNames,
                                       bool allowDuplicates);
    static std::size_t mergeProperties(Corvo::IProperties &props1, const Corvo::IProperties &props2,
                                       const char *pszSeparator, bool allowDuplicates);

private:
    Content m_Content;

    static Corvo::IGigETransportLayer *s_pTl;
    static QAtomicInt s_ref;
};
