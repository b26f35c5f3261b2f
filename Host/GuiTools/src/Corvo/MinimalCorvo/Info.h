#pragma once

#include "MinimalCorvo/PropertyBag.h"

#include <memory>

namespace Corvo {

/// What an info object holds: its properties, and whether they come from the user or from an enumeration.
class CInfoImpl : public CPropertyBag {
public:
    bool IsUserProvided() const { return m_IsUserProvided; }
    void ClearUserProvidedFlag() { m_IsUserProvided = false; }
    /// Compares all properties, hidden ones included, and no flag.
    bool operator==(const CInfoImpl &other) const { return this == &other || HasSameProperties(other); }

private:
    bool m_IsUserProvided = true;
};

/// Describes one enumerable thing (transport layer, interface, device) by text properties.
///
/// A value: every object owns its properties, and a copy is independent of its source. Not thread safe. The accessors
/// of the standard keys go through the virtual property operations, so a class that overrides those serves them as
/// well; their getters return "N/A" for a missing property, their setters the object itself.
class CInfoBase : public IProperties {
public:
    static constexpr const char *PropertyNotAvailable = "N/A";
    static const char *GetPropertyNotAvailable() { return PropertyNotAvailable; }

    CInfoBase();
    CInfoBase(const CInfoBase &other);
    CInfoBase &operator=(const CInfoBase &other);

    int GetPropertyNames(StringList_t &names) const override;
    bool GetPropertyAvailable(const String_t &name) const override;
    bool GetPropertyValue(const String_t &name, String_t &value) const override;
    CInfoBase &SetPropertyValue(const String_t &name, const String_t &value) override;
    bool IsSubset(const IProperties &subset) const override;
    /// False for an info that an enumeration made.
    virtual bool IsUserProvided() const;

    virtual ~CInfoBase();

    String_t GetFriendlyName() const;
    CInfoBase &SetFriendlyName(const String_t &value);
    bool IsFriendlyNameAvailable() const;

    String_t GetFullName() const;
    CInfoBase &SetFullName(const String_t &value);
    bool IsFullNameAvailable() const;

    String_t GetVendorName() const;
    CInfoBase &SetVendorName(const String_t &value);
    bool IsVendorNameAvailable() const;

    /// The class name of the transport layer that the thing is or belongs to.
    String_t GetDeviceClass() const;
    CInfoBase &SetDeviceClass(const String_t &value);
    bool IsDeviceClassAvailable() const;

    /// Compares all properties, hidden ones included.
    bool operator==(const CInfoBase &other) const;
    /// Orders by device class: the known classes by their priority (USB first), then the others by name, the camera
    /// emulator last. Infos of one class are not less than each other.
    bool operator<(const CInfoBase &other) const;

protected:
    CInfoImpl &Impl() { return *m_pImpl; }
    const CInfoImpl &Impl() const { return *m_pImpl; }
    /// The value, or "N/A".
    String_t GetStandardProperty(const String_t &name) const;

private:
    std::unique_ptr<CInfoImpl> m_pImpl;
};

/// Describes a transport layer.
class CTlInfo : public CInfoBase {};

/// Describes an interface of a transport layer.
class CInterfaceInfo : public CInfoBase {};

} // namespace Corvo
