#pragma once

#include "GenApi/Types.h"

namespace GenApi {

/// Common root of all node interfaces. Objects belong to their node map and are never copied or deleted by users.
class IBase {
public:
    IBase(const IBase &) = delete;
    IBase &operator=(const IBase &) = delete;

    /// What can be done with the node now. Not implemented wins over not available, which wins over everything else;
    /// the read and write rights of the node, its imposed mode, its target and its port are combined by AND, and a lock
    /// takes writing away. Structural faults of the file (a reference to a node that does not exist) give NI.
    /// \throws RuntimeException when a condition of the node cannot be evaluated; whatever the port throws.
    virtual EAccessMode GetAccessMode() const = 0;

protected:
    IBase() = default;
    virtual ~IBase() = default;
};

constexpr bool IsImplemented(EAccessMode mode) { return mode != NI; }
constexpr bool IsAvailable(EAccessMode mode) { return mode != NI && mode != NA; }
constexpr bool IsReadable(EAccessMode mode) { return mode == RO || mode == RW; }
constexpr bool IsWritable(EAccessMode mode) { return mode == WO || mode == RW; }

// The forms for nodes; a missing node is not implemented.
inline bool IsImplemented(const IBase *node) { return node != nullptr && IsImplemented(node->GetAccessMode()); }
inline bool IsAvailable(const IBase *node) { return node != nullptr && IsAvailable(node->GetAccessMode()); }
inline bool IsReadable(const IBase *node) { return node != nullptr && IsReadable(node->GetAccessMode()); }
inline bool IsWritable(const IBase *node) { return node != nullptr && IsWritable(node->GetAccessMode()); }
inline bool IsImplemented(const IBase &node) { return IsImplemented(&node); }
inline bool IsAvailable(const IBase &node) { return IsAvailable(&node); }
inline bool IsReadable(const IBase &node) { return IsReadable(&node); }
inline bool IsWritable(const IBase &node) { return IsWritable(&node); }

/// The rights both modes grant: NI wins, then NA, then reading and writing each need both.
constexpr EAccessMode Combine(EAccessMode a, EAccessMode b) {
    if (a == NI || b == NI)
        return NI;
    const bool readable = IsReadable(a) && IsReadable(b);
    const bool writable = IsWritable(a) && IsWritable(b);
    if (readable)
        return writable ? RW : RO;
    return writable ? WO : NA;
}

/// Text of a mode: "NI", "NA", "WO", "RO" or "RW".
const char *AccessModeText(EAccessMode mode);

} // namespace GenApi
