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
            if (propertyInfos[static_cast<std::size_t>(m_slots[slot])].name == name)
                return m_slots[slot];
        return EProperty::Count;
    }

private:
    /// Length and four letters tell nearly all names apart.
    std::size_t Hash(std::string_view name) const {
        if (name.empty())
            return 0;
        const auto letter = [name](std::size_t i) { return static_cast<unsigned char>(name[i]); };
        const std::size_t last = name.size() - 1;
        const std::size_t mixed = letter(0) + 7u * letter(last / 2) + 31u * letter(last) + 61u * letter(last / 4);
        return (mixed + 131u * name.size()) % m_slots.size();
    }

    std::array<EProperty, 512> m_slots{};
};

} // namespace

ERelation RelationOf(EProperty property) { return propertyInfos[static_cast<std::size_t>(property)].relation; }

std::string_view NameOf(EProperty property) { return propertyInfos[static_cast<std::size_t>(property)].name; }

EProperty PropertyNamed(std::string_view element) {
    static const CPropertyTable table;
    return table.Find(element);
}

} // namespace GenApi
