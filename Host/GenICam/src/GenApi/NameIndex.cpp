#include "NameIndex.h"

#include <functional>

namespace GenApi {

CNameIndex::CNameIndex(const std::vector<SNodeDescription> &nodes) : m_nodes(nodes) {
    std::size_t slots = 2;
    while (slots <= 2 * nodes.size())
        slots *= 2;
    m_slots.assign(slots, NoNode);
}

bool CNameIndex::Add(int32_t node) {
    int32_t &slot = m_slots[SlotOf(m_nodes[static_cast<std::size_t>(node)].name)];
    if (slot != NoNode)
        return false;
    slot = node;
    return true;
}

std::size_t CNameIndex::SlotOf(std::string_view name) const {
    const std::size_t last = m_slots.size() - 1;
    std::size_t slot = std::hash<std::string_view>()(name) & last;
    while (m_slots[slot] != NoNode && m_nodes[static_cast<std::size_t>(m_slots[slot])].name != name)
        slot = (slot + 1) & last;
    return slot;
}

} // namespace GenApi
