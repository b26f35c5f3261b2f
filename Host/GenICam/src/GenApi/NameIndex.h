#pragma once

#include "Description.h"

namespace GenApi {

/// Finds nodes by name. An open hash table of indices alone: the names stand in the description.
class CNameIndex {
public:
    /// The list must outlive the index.
    explicit CNameIndex(const std::vector<SNodeDescription> &nodes);

    /// \returns false when another node has that name, which stays the one that is found.
    bool Add(int32_t node);
    /// NoNode when there is none.
    int32_t Find(std::string_view name) const { return m_slots[SlotOf(name)]; }

private:
    /// Where the node of that name is, or would be.
    std::size_t SlotOf(std::string_view name) const;

    const std::vector<SNodeDescription> &m_nodes;
    /// A power of two, and more than twice as many as there are nodes.
    std::vector<int32_t> m_slots;
};

} // namespace GenApi
