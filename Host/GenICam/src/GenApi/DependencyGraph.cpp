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
                add(property.target,
                    SDependent{self, relation != ERelation::Locate, false, relation == ERelation::Invalidate});
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

template <class Visit> void CDependencyGraph::ForEachSource(int32_t index, Visit &&visit) const {
    const SNodeDescription &node = m_description.nodes[static_cast<std::size_t>(index)];
    for (uint32_t p = node.firstProperty; p < node.firstProperty + node.propertyCount; ++p) {
        const SProperty &source = m_description.properties[p];
        const bool passesValue = RelationOf(source.id) == ERelation::ReadWrite;
        if (source.target != NoNode && (passesValue || RelationOf(source.id) == ERelation::Read))
            visit(source.target, passesValue || source.id == EProperty::pVariable);
    }
}

std::vector<SDependent> CDependencyGraph::DependentsOf(int32_t origin, bool isInvalidated) {
    std::vector<SDependent> found = {{origin, false, false, isInvalidated}};
    m_reached[static_cast<std::size_t>(origin)] = {++m_search, 0};
    if (isInvalidated)
        m_invalidated.push_back(origin);
    for (std::size_t at = 0; at < found.size(); ++at) {
        const auto node = static_cast<std::size_t>(found[at].node);
        for (uint32_t edge = m_first[node]; edge < m_first[node + 1]; ++edge)
            Reach(found, m_dependents[edge]);
        ReachInvalidated(found);
    }
    ReachSelected(found);
    found.erase(found.begin());
    return found;
}

/// A feature keeps nothing itself: its value is read anew when that of the registers below it is.
void CDependencyGraph::ReachInvalidated(std::vector<SDependent> &found) {
    while (!m_invalidated.empty()) {
        const int32_t node = m_invalidated.back();
        m_invalidated.pop_back();
        ForEachSource(node, [&](int32_t source, bool isValue) {
            if (isValue)
                Reach(found, {source, true, false, true});
        });
    }
}

/// What selected features read has another value now as well, except for a register that is already known to be another
/// one: it keeps what it knows of each.
void CDependencyGraph::ReachSelected(std::vector<SDependent> &found) {
    std::vector<int32_t> selected;
    for (const SDependent &dependent : found)
        if (dependent.isSelected)
            selected.push_back(dependent.node);
    while (!selected.empty()) {
        const int32_t node = selected.back();
        selected.pop_back();
        ForEachSource(node, [&](int32_t source, bool) {
            const SReached &reached = m_reached[static_cast<std::size_t>(source)];
            if (reached.search != m_search)
                Reach(found, {source, true});
            if (!std::exchange(found[reached.position].isSelected, true))
                selected.push_back(source);
        });
    }
}

void CDependencyGraph::Reach(std::vector<SDependent> &found, const SDependent &dependent) {
    SReached &reached = m_reached[static_cast<std::size_t>(dependent.node)];
    if (reached.search != m_search) {
        reached = {m_search, static_cast<uint32_t>(found.size())};
        found.push_back({dependent.node});
    }
    SDependent &known = found[reached.position];
    if (dependent.isInvalidated && !known.isInvalidated)
        m_invalidated.push_back(dependent.node);
    known.isStale = known.isStale || dependent.isStale;
    known.isSelected = known.isSelected || dependent.isSelected;
    known.isInvalidated = known.isInvalidated || dependent.isInvalidated;
}

} // namespace GenApi
