#pragma once

#include "RegisterCache.h"

#include "GenApi/Synch.h"

#include <cstdint>

namespace GenApi {

class CNodeImpl;
class CNodeMapImpl;

/// Properties of a node whose evaluation may come back to itself; bits of a set.
enum class EEvaluated : uint16_t {
    Value = 1 << 0,
    Write = 1 << 1,
    Minimum = 1 << 2,
    Maximum = 1 << 3,
    Increment = 1 << 4,
    Access = 1 << 5,
    Address = 1 << 6,
    Length = 1 << 7,
    CachingMode = 1 << 8,
    IsCached = 1 << 9,
    Representation = 1 << 10,
    TextLength = 1 << 11
};

/// How far the evaluation of one node map has got. Guarded by the map's lock.
struct SEvaluation {
    unsigned depth = 0;
    unsigned steps = 0;
    /// Operations under way, each within the one before.
    unsigned operations = 0;
    /// Grows with each outermost operation and each change, so that results can be kept for just as long.
    uint64_t epoch = 1;
    /// What registers that must not be cached were read as in this epoch.
    CRegisterCache reads;

    /// What was found so far is not true any more.
    void Advance() {
        ++epoch;
        reads.Clear();
    }
    bool IsUnderWay() const { return depth > 0 || operations > 0; }
};

/// One operation of the user that only reads. Holds the map's lock; what is found on the way stays known to its end, so
/// that a hundred entries whose conditions read the same registers read them once.
class COperation {
public:
    explicit COperation(const CNodeMapImpl &map);
    ~COperation();
    COperation(const COperation &) = delete;
    COperation &operator=(const COperation &) = delete;

private:
    const AutoLock m_lock;
    SEvaluation &m_evaluation;
};

/// Marks one property of a node as being evaluated. Keeps evaluation from running in circles, from exhausting the stack
/// on long chains and from taking forever on wide ones.
class CEvaluationScope {
public:
    /// \throws RuntimeException naming the node.
    CEvaluationScope(const CNodeImpl &node, EEvaluated what);
    ~CEvaluationScope();
    CEvaluationScope(const CEvaluationScope &) = delete;
    CEvaluationScope &operator=(const CEvaluationScope &) = delete;

private:
    const CNodeImpl &m_node;
    uint16_t m_bit;
};

} // namespace GenApi
