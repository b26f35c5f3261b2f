#pragma once

#include "GenApi/Types.h"

namespace GenApi {

struct Version_t {
    uint16_t Major = 0;
    uint16_t Minor = 0;
    uint16_t SubMinor = 0;
};

/// What the root element of the file says about the device; a node map implements it.
class IDeviceInfo {
public:
    virtual gcstring GetModelName() const = 0;
    virtual gcstring GetVendorName() const = 0;
    virtual gcstring GetToolTip() const = 0;
    virtual gcstring GetStandardNameSpace() const = 0;
    virtual void GetSchemaVersion(Version_t &Version) const = 0;
    virtual void GetDeviceVersion(Version_t &Version) const = 0;
    virtual gcstring GetProductGuid() const = 0;
    virtual gcstring GetVersionGuid() const = 0;

protected:
    virtual ~IDeviceInfo() = default;
};

} // namespace GenApi
