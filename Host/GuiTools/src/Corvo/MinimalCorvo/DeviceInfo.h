#pragma once

#include "MinimalCorvo/Info.h"

namespace Corvo {

/// Describes a device; a value like every info.
class CDeviceInfo : public CInfoBase {
public:
    CDeviceInfo &SetPropertyValue(const String_t &name, const String_t &value) override;

    // The setters of CInfoBase once more, so that chained calls stay device infos.
    CDeviceInfo &SetFriendlyName(const String_t &value);
    CDeviceInfo &SetFullName(const String_t &value);
    CDeviceInfo &SetVendorName(const String_t &value);
    CDeviceInfo &SetDeviceClass(const String_t &value);

    String_t GetSerialNumber() const;
    CDeviceInfo &SetSerialNumber(const String_t &value);
    bool IsSerialNumberAvailable() const;

    String_t GetUserDefinedName() const;
    CDeviceInfo &SetUserDefinedName(const String_t &value);
    bool IsUserDefinedNameAvailable() const;

    String_t GetModelName() const;
    CDeviceInfo &SetModelName(const String_t &value);
    bool IsModelNameAvailable() const;

    String_t GetDeviceVersion() const;
    CDeviceInfo &SetDeviceVersion(const String_t &value);
    bool IsDeviceVersionAvailable() const;

    /// Full name of the transport layer that found the device.
    String_t GetDeviceFactory() const;
    CDeviceInfo &SetDeviceFactory(const String_t &value);
    bool IsDeviceFactoryAvailable() const;

    String_t GetXMLSource() const;
    CDeviceInfo &SetXMLSource(const String_t &value);
    bool IsXMLSourceAvailable() const;

    /// Orders by device class as CInfoBase does, and within a class by serial number: plain decimal numbers first, by
    /// value, then all others byte-wise.
    bool operator<(const CDeviceInfo &other) const;
};

} // namespace Corvo
