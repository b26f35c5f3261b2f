#include "RegisterCache.h"

#include <algorithm>
#include <limits>

namespace GenApi {

namespace {

// Far more than a camera has; beyond it the cache starts anew.
constexpr std::size_t maxLines = 100'000;
constexpr std::size_t maxBytes = 64u << 20;

constexpr int64_t lowestAddress = std::numeric_limits<int64_t>::min();

/// Addresses may be any number, so distances are taken unsigned.
uint64_t Distance(int64_t from, int64_t to) { return static_cast<uint64_t>(to) - static_cast<uint64_t>(from); }

} // namespace

CRegisterCache::Lines::const_iterator CRegisterCache::FirstOf(int32_t owner) const {
    const auto line = m_lines.lower_bound({owner, lowestAddress});
    return line != m_lines.end() && line->first.first == owner ? line : m_lines.end();
}

const CRegisterCache::Bytes *CRegisterCache::Find(int32_t owner, int64_t address, std::size_t length) const {
    const auto line = m_lines.find({owner, address});
    return line != m_lines.end() && line->second.size() == length ? &line->second : nullptr;
}

void CRegisterCache::Store(int32_t owner, int64_t address, Bytes bytes) {
    const auto old = m_lines.find({owner, address});
    if (old != m_lines.end())
        Erase(old);
    if (m_lines.size() >= maxLines || m_size + bytes.size() > maxBytes)
        Clear();
    m_longest = std::max(m_longest, bytes.size());
    m_size += bytes.size();
    m_byAddress.emplace(address, owner);
    m_lines.emplace(OwnerAndAddress(owner, address), std::move(bytes));
}

void CRegisterCache::DropOwner(int32_t owner) {
    for (auto line = FirstOf(owner); line != m_lines.end() && line->first.first == owner;)
        line = Erase(line);
}

void CRegisterCache::DropOverlapping(int64_t address, std::size_t length) {
    const uint64_t reach = std::min<uint64_t>(m_longest, Distance(lowestAddress, address));
    auto at = m_byAddress.lower_bound({address - static_cast<int64_t>(reach), 0});
    while (at != m_byAddress.end() && (at->first < address || Distance(address, at->first) < length)) {
        const auto line = m_lines.find({at->second, at->first});
        ++at;
        if (line->first.second >= address || Distance(line->first.second, address) < line->second.size())
            Erase(line);
    }
}

void CRegisterCache::Clear() {
    m_lines.clear();
    m_byAddress.clear();
    m_size = 0;
}

CRegisterCache::Lines::const_iterator CRegisterCache::Erase(Lines::const_iterator line) {
    m_size -= line->second.size();
    m_byAddress.erase({line->first.second, line->first.first});
    return m_lines.erase(line);
}

} // namespace GenApi
