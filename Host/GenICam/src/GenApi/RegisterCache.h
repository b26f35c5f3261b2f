#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <utility>
#include <vector>

namespace GenApi {

/// The bytes behind one port that its registers have read or written, per register and address: a register whose
/// address moves with an index keeps one line for each. Guarded by the node map's lock.
///
/// Two registers at one address keep lines of their own, since each has its own rules for when they are stale; a write
/// to overlapping bytes ends them all.
class CRegisterCache {
public:
    using Bytes = std::vector<uint8_t>;

    /// The line of that register at that address and of that length, or null. Valid until the next change.
    const Bytes *Find(int32_t owner, int64_t address, std::size_t length) const;
    void Store(int32_t owner, int64_t address, Bytes bytes);
    void DropOwner(int32_t owner);
    void DropOverlapping(int64_t address, std::size_t length);
    void Clear();

private:
    using OwnerAndAddress = std::pair<int32_t, int64_t>;
    using Lines = std::map<OwnerAndAddress, Bytes>;

    Lines::const_iterator FirstOf(int32_t owner) const;
    Lines::const_iterator Erase(Lines::const_iterator line);

    Lines m_lines;
    std::set<std::pair<int64_t, int32_t>> m_byAddress;
    /// Length of the longest line ever kept, which bounds the search for overlaps.
    std::size_t m_longest = 0;
    std::size_t m_size = 0;
};

} // namespace GenApi
