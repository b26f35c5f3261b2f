#pragma once

#include "Description.h"

namespace GenApi {

/// Who is stale when a node changes. Guarded by the node map's lock.
class CDependencyGraph {
public:
    explicit CDependencyGraph(const SDescription &description);

    /// All nodes that depend on \p origin, directly or through others, each once and without itself; nearest first.
    std::vector<int32_t> DependentsOf(int32_t origin);

private:
    /// Calls `add(changed, dependent)` for each direct dependence.
    template <class Add> static void ForEachEdge(const SDescription &description, Add &&add);

    /// Dependents of node i stand at m_dependents[m_first[i]] up to m_first[i + 1].
    std::vector<uint32_t> m_first;
    std::vector<int32_t> m_dependents;
    /// Number of the search that reached a node last.
    std::vector<uint32_t> m_reached;
    uint32_t m_search = 0;
};

} // namespace GenApi
