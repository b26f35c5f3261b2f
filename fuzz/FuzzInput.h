#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

/// Takes an input apart from its front; past its end there are zeros and empty pieces.
class FuzzInput {
public:
    FuzzInput(const std::uint8_t *data, std::size_t size) : m_Next(data), m_End(data + size) {}

    bool IsEmpty() const { return m_Next == m_End; }
    std::uint8_t Byte() { return IsEmpty() ? std::uint8_t{0} : *m_Next++; }
    Bytes Take(std::size_t count) {
        const std::uint8_t *start = m_Next;
        m_Next += std::min(count, static_cast<std::size_t>(m_End - m_Next));
        return {start, m_Next};
    }
    Bytes Rest() { return Take(SIZE_MAX); }
    /// Up to a zero, which is dropped.
    std::string Text() {
        const std::uint8_t *start = m_Next;
        m_Next = std::find(m_Next, m_End, std::uint8_t{0});
        std::string text(start, m_Next);
        Byte();
        return text;
    }

private:
    const std::uint8_t *m_Next;
    const std::uint8_t *m_End;
};

/// A big-endian number of a record; the bytes must be there.
inline std::uint16_t Half(const Bytes &bytes, std::size_t offset) {
    return static_cast<std::uint16_t>(bytes.at(offset) << 8 | bytes.at(offset + 1));
}
inline std::uint32_t Word(const Bytes &bytes, std::size_t offset) {
    return static_cast<std::uint32_t>(Half(bytes, offset)) << 16 | Half(bytes, offset + 2);
}
inline void PutHalf(Bytes &bytes, std::size_t offset, std::size_t value) {
    bytes.at(offset) = static_cast<std::uint8_t>(value >> 8);
    bytes.at(offset + 1) = static_cast<std::uint8_t>(value);
}

/// Ends the run as a finding.
inline void Require(bool condition, const char *what) {
    if (condition)
        return;
    std::fprintf(stderr, "broken: %s\n", what);
    std::abort();
}
