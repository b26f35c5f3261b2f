#include "Description.h"

#include <array>

namespace GenApi {

namespace {

struct SPropertyInfo {
    std::string_view name;
    ERelation relation;
};

constexpr std::array<SPropertyInfo, static_cast<std::size_t>(EProperty::Count)> propertyInfos = {{
#define GENAPI_INFO(name, relation) {#name, ERelation::relation},
    GENAPI_PROPERTIES(GENAPI_INFO)
#undef GENAPI_INFO
}};

/// A file has some hundred thousand elements, so look-up by name is a small open hash table.
class CPropertyTable {
public:
    CPropertyTable() {
        m_slots.fill(EProperty::Count);
        for (std::size_t i = 0; i < propertyInfos.size(); ++i) {
            std::size_t slot = Hash(propertyInfos[i].name);
            while (m_slots[slot] != EProperty::Count)
                slot = (slot + 1) % m_slots.size();
            m_slots[slot] = static_cast<EProperty>(i);
        }
    }

    EProperty Find(std::string_view name) const {
        for (std::size_t slot = Hash(name); m_slots[slot] != EProperty::Count; slot = (slot + 1) % m_slots.size())
            if (NameOf(m_slots[slot]) == name)
                return m_slots[slot];
        return EProperty::Count;
    }

private:
    std::size_t Hash(std::string_view name) const {
        std::size_t hash = name.size();
        for (const char ch : name)
            hash = hash * 31 + static_cast<unsigned char>(ch);
        return hash % m_slots.size();
    }

    std::array<EProperty, 512> m_slots;
};

} // namespace

ERelation RelationOf(EProperty property) { return propertyInfos[static_cast<std::size_t>(property)].relation; }

std::string_view NameOf(EProperty property) { return propertyInfos[static_cast<std::size_t>(property)].name; }

EProperty PropertyNamed(std::string_view element) {
    static const CPropertyTable table;
    return table.Find(element);
}

} // namespace GenApi
