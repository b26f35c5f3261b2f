#include "MinimalCorvo/PropertyBag.h"

#include "Base/GCException.h"

#include <algorithm>
#include <limits>
#include <typeinfo>

// A subset that lists a name without having its value ends release builds, too, rather than matching something.
#undef NDEBUG
#include <cassert>

namespace Corvo {

namespace {

bool FitsInt(std::size_t count) { return count <= static_cast<std::size_t>(std::numeric_limits<int>::max()); }

} // namespace

int CPropertyBag::GetPropertyNames(StringList_t &names) const {
    for (const auto &property : m_Properties) {
        if (!IsHiddenProperty(property.first))
            names.push_back(property.first);
    }
    if (!FitsInt(names.size()))
        throw OUT_OF_RANGE_EXCEPTION("Property Name list too long");
    return static_cast<int>(names.size());
}

bool CPropertyBag::GetPropertyAvailable(const String_t &name) const { return m_Properties.count(name) != 0; }

bool CPropertyBag::GetPropertyValue(const String_t &name, String_t &value) const {
    const auto property = m_Properties.find(name);
    if (property == m_Properties.end())
        return false;
    value = property->second;
    return true;
}

CPropertyBag &CPropertyBag::SetPropertyValue(const String_t &name, const String_t &value) {
    const bool added = m_Properties.insert_or_assign(name, value).second;
    (added ? m_isExtended : m_isModified) = true;
    return *this;
}

bool CPropertyBag::IsSubset(const IProperties &subset) const { return IsSubset(subset, nullptr); }

bool CPropertyBag::IsSubset(const IProperties &subset, const IPropertyValueComparer *comparer) const {
    StringList_t names;
    subset.GetPropertyNames(names);
    return std::all_of(names.begin(), names.end(), [&](const String_t &name) {
        const auto property = m_Properties.find(name);
        if (property == m_Properties.end())
            return false;
        String_t subsetValue;
        const bool delivered = subset.GetPropertyValue(name, subsetValue);
        assert(delivered);
        return comparer != nullptr ? comparer->PropertyValuesAreEqual(name, property->second, subsetValue)
                                   : property->second == subsetValue;
    });
}

void CPropertyBag::ClearAccessFlags() { m_isModified = m_isExtended = false; }

int CPropertyBag::GetCount() const {
    if (!FitsInt(m_Properties.size()))
        throw std::bad_cast();
    return static_cast<int>(std::count_if(m_Properties.begin(), m_Properties.end(),
                                          [](const auto &property) { return !IsHiddenProperty(property.first); }));
}

bool CPropertyBag::IsHiddenProperty(const String_t &name) { return !name.empty() && name[0] == '_'; }

} // namespace Corvo
