#include "DependencyGraph.h"

namespace GenApi {

template <class Add> void CDependencyGraph::ForEachEdge(const SDescription &description, Add &&add) {
    for (std::size_t i = 0; i < description.nodes.size(); ++i) {
        const SNodeDescription &node = description.nodes[i];
        for (uint32_t p = node.firstProperty; p < node.firstProperty + node.propertyCount; ++p) {
            const SProperty &property = description.properties[p];
            if (property.target == NoNode)
                continue;
            switch (RelationOf(property.id)) {
            case ERelation::Read:
            case ERelation::ReadWrite:
            case ERelation::Port:
            case ERelation::Invalidate:
                add(property.target, static_cast<int32_t>(i));
                break;
            case ERelation::Select:
                add(static_cast<int32_t>(i), property.target);
                break;
            default:
                break;
            }
        }
    }
}

CDependencyGraph::CDependencyGraph(const SDescription &description)
    : m_first(description.nodes.size() + 1), m_reached(description.nodes.size()) {
    ForEachEdge(description, [this](int32_t changed, int32_t) { ++m_first[static_cast<std::size_t>(changed) + 1]; });
    for (std::size_t i = 1; i < m_first.size(); ++i)
        m_first[i] += m_first[i - 1];
    m_dependents.resize(m_first.back());
    std::vector<uint32_t> next = m_first;
    ForEachEdge(description, [&](int32_t changed, int32_t dependent) {
        m_dependents[next[static_cast<std::size_t>(changed)]++] = dependent;
    });
}

std::vector<int32_t> CDependencyGraph::DependentsOf(int32_t origin) {
    std::vector<int32_t> found = {origin};
    ++m_search;
    m_reached[static_cast<std::size_t>(origin)] = m_search;
    for (std::size_t at = 0; at < found.size(); ++at) {
        const auto node = static_cast<std::size_t>(found[at]);
        for (uint32_t edge = m_first[node]; edge < m_first[node + 1]; ++edge) {
            uint32_t &reached = m_reached[static_cast<std::size_t>(m_dependents[edge])];
            if (reached != m_search)
                found.push_back(m_dependents[edge]);
            reached = m_search;
        }
    }
    found.erase(found.begin());
    return found;
}

} // namespace GenApi
