#pragma once

#include "MinimalCorvo/Types.h"

namespace Corvo {

/// Read and write access to a set of named text properties.
class IProperties {
public:
    /// Appends the names of the visible properties. \returns the size of the whole list.
    virtual int GetPropertyNames(StringList_t &names) const = 0;
    virtual bool GetPropertyAvailable(const String_t &name) const = 0;
    /// \returns false, and leaves \p value alone, when there is no such property.
    virtual bool GetPropertyValue(const String_t &name, String_t &value) const = 0;
    /// Adds the property or overwrites its value.
    virtual IProperties &SetPropertyValue(const String_t &name, const String_t &value) = 0;
    /// Whether this object holds every visible property of \p subset with an equal value.
    virtual bool IsSubset(const IProperties &subset) const = 0;

protected:
    ~IProperties() = default;
};

/// Decides when two values of one property count as equal.
class IPropertyValueComparer {
public:
    /// \param value that of the bag under test. \param subsetValue that of the subset it is tested against.
    virtual bool PropertyValuesAreEqual(const String_t &name, const String_t &value,
                                        const String_t &subsetValue) const = 0;

    virtual ~IPropertyValueComparer() = default;
};

} // namespace Corvo
