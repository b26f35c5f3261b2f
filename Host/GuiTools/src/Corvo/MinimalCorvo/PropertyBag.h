#pragma once

#include "MinimalCorvo/Properties.h"

#include <map>

namespace Corvo {

/// Named text properties, ordered byte-wise by name. A value type without locking.
///
/// A property whose name begins with "_" is hidden: it is stored, copied and compared like any other and can be read
/// and written by name, but it is neither listed nor counted.
class CPropertyBag : public IProperties {
public:
    virtual ~CPropertyBag() = default;

    /// \throws OutOfRangeException when the whole list does not fit an int.
    int GetPropertyNames(StringList_t &names) const override;
    bool GetPropertyAvailable(const String_t &name) const override;
    bool GetPropertyValue(const String_t &name, String_t &value) const override;
    CPropertyBag &SetPropertyValue(const String_t &name, const String_t &value) override;
    bool IsSubset(const IProperties &subset) const override;
    /// \param comparer decides on equality; null compares byte by byte.
    bool IsSubset(const IProperties &subset, const IPropertyValueComparer *comparer) const;

    /// Whether a value was overwritten, or a property added, since construction or the last ClearAccessFlags. Copies
    /// carry both flags.
    bool IsModified() const { return m_isModified; }
    bool IsExtended() const { return m_isExtended; }
    void ClearAccessFlags();

    /// Number of visible properties. \throws std::bad_cast when the bag is too large for an int.
    int GetCount() const;
    static bool IsHiddenProperty(const String_t &name);

protected:
    bool HasSameProperties(const CPropertyBag &other) const { return m_Properties == other.m_Properties; }

private:
    std::map<String_t, String_t> m_Properties;
    bool m_isModified = false;
    bool m_isExtended = false;
};

} // namespace Corvo
