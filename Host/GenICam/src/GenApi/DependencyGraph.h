#pragma once

#include "Description.h"

namespace GenApi {

struct SDependent {
    int32_t node = NoNode;
    /// What the node keeps in its cache is not true any more. False when only the register it reads is another one.
    bool isStale = false;
    /// A selector that changed names the node, or it stands behind such a node.
    bool isSelected = false;
    /// The node was invalidated, or gives an invalidated node its value.
    bool isInvalidated = false;
};

/// Who is affected when a node changes. Guarded by the node map's lock.
class CDependencyGraph {
public:
    /// The description must outlive the graph.
    explicit CDependencyGraph(const SDescription &description);

    /// All nodes that depend on \p origin, directly or through others, each once and without itself; nearest first.
    /// \param isInvalidated what the origin takes its value from is stale as well.
    std::vector<SDependent> DependentsOf(int32_t origin, bool isInvalidated = false);

private:
    /// Place of a node among the results of one search.
    struct SReached {
        uint32_t search;
        uint32_t position;
    };

    /// Calls `add(changed, dependent)` for each direct dependence.
    template <class Add> static void ForEachEdge(const SDescription &description, Add &&add);
    /// Calls `visit(source, isValue)` for each node that the node reads; isValue when it takes its value from there.
    template <class Visit> void ForEachSource(int32_t index, Visit &&visit) const;
    void Reach(std::vector<SDependent> &found, const SDependent &dependent);
    void ReachInvalidated(std::vector<SDependent> &found);
    void ReachSelected(std::vector<SDependent> &found);

    const SDescription &m_description;
    /// Dependents of node i stand at m_dependents[m_first[i]] up to m_first[i + 1].
    std::vector<uint32_t> m_first;
    std::vector<SDependent> m_dependents;
    std::vector<SReached> m_reached;
    /// Nodes whose sources are still to be invalidated.
    std::vector<int32_t> m_invalidated;
    uint32_t m_search = 0;
};

} // namespace GenApi
