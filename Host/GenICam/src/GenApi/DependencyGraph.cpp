#include "DependencyGraph.h"

#include <utility>

namespace GenApi {

template <class Add> void CDependencyGraph::ForEachEdge(const SDescription &description, Add &&add) {
    for (std::size_t i = 0; i < description.nodes.size(); ++i) {
        const SNodeDescription &node = description.nodes[i];
        const auto self = static_cast<int32_t>(i);
        for (uint32_t p = node.firstProperty; p < node.firstProperty + node.propertyCount; ++p) {
            const SProperty &property = description.properties[p];
            const ERelation relation = RelationOf(property.id);
            if (property.target == NoNode || relation == ERelation::Write || relation == ERelation::Link)
                continue;
            if (relation == ERelation::Select)
                add(self, SDependent{property.target, true, true});
            else
                add(property.target, SDependent{self, relation != ERelation::Locate});
        }
    }
}

CDependencyGraph::CDependencyGraph(const SDescription &description)
    : m_description(description), m_first(description.nodes.size() + 1), m_reached(description.nodes.size()) {
    ForEachEdge(description, [this](int32_t changed, SDependent) { ++m_first[static_cast<std::size_t>(changed) + 1]; });
    for (std::size_t i = 1; i < m_first.size(); ++i)
        m_first[i] += m_first[i - 1];
    m_dependents.resize(m_first.back());
    std::vector<uint32_t> next = m_first;
    ForEachEdge(description, [&](int32_t changed, SDependent dependent) {
        m_dependents[next[static_cast<std::size_t>(changed)]++] = dependent;
    });
}

std::vector<SDependent> CDependencyGraph::DependentsOf(int32_t origin) {
    std::vector<SDependent> found;
    ++m_search;
    Reach(found, {origin, false});
    for (std::size_t at = 0; at < found.size(); ++at) {
        const auto node = static_cast<std::size_t>(found[at].node);
        for (uint32_t edge = m_first[node]; edge < m_first[node + 1]; ++edge)
            Reach(found, m_dependents[edge]);
    }
    ReachSelected(found);
    found.erase(found.begin());
    return found;
}

/// What selected features read has another value now as well, except for a register that is already known to be another
/// one: it keeps what it knows of each.
void CDependencyGraph::ReachSelected(std::vector<SDependent> &found) {
    std::vector<int32_t> selected;
    for (const SDependent &dependent : found)
        if (dependent.isSelected)
            selected.push_back(dependent.node);
    while (!selected.empty()) {
        const SNodeDescription &node = m_description.nodes[static_cast<std::size_t>(selected.back())];
        selected.pop_back();
        for (uint32_t p = node.firstProperty; p < node.firstProperty + node.propertyCount; ++p) {
            const SProperty &source = m_description.properties[p];
            const ERelation relation = RelationOf(source.id);
            if (source.target == NoNode || (relation != ERelation::Read && relation != ERelation::ReadWrite))
                continue;
            const SReached &reached = m_reached[static_cast<std::size_t>(source.target)];
            const bool isNew = reached.search != m_search;
            if (isNew)
                Reach(found, {source.target, true});
            if (!std::exchange(found[reached.position].isSelected, true))
                selected.push_back(source.target);
        }
    }
}

void CDependencyGraph::Reach(std::vector<SDependent> &found, const SDependent &dependent) {
    SReached &reached = m_reached[static_cast<std::size_t>(dependent.node)];
    if (reached.search == m_search) {
        found[reached.position].isStale = found[reached.position].isStale || dependent.isStale;
        found[reached.position].isSelected = found[reached.position].isSelected || dependent.isSelected;
        return;
    }
    reached = {m_search, static_cast<uint32_t>(found.size())};
    found.push_back(dependent);
}

} // namespace GenApi
