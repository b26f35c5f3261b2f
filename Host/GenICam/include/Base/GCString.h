#pragma once

#include "Base/GCNamespace.h"

#include <cstddef>
#include <iosfwd>
#include <string>
#include <utility>

namespace GenICam {

/// The GenICam string: a growable sequence of bytes (UTF-8 where it is text) with byte-wise ordering.
///
/// A value type without locking; it may hold zero bytes, which c_str() then shows as an early end. A null `const char*`
/// counts as the empty text everywhere. Traps: the conversion to `const char*` makes `if (text)` compile, and be true;
/// a number counts as a character, so `text + 1` appends the byte 1.
class gcstring {
public:
    static constexpr std::size_t npos = std::string::npos;

    gcstring() = default;
    gcstring(const char *text) : m_text(text != nullptr ? text : "") {}
    gcstring(const std::string &text) : m_text(text) {}
    gcstring(std::string &&text) noexcept : m_text(std::move(text)) {}
    gcstring(std::size_t count, char ch) : m_text(count, ch) {}

    gcstring &assign(const gcstring &text) { return *this = text; }
    gcstring &assign(std::size_t count, char ch) { return *this = gcstring(count, ch); }
    gcstring &append(const gcstring &text);
    gcstring &append(std::size_t count, char ch);
    gcstring &operator+=(const gcstring &text) { return append(text); }
    gcstring &operator+=(char ch) { return append(1, ch); }

    const char *c_str() const noexcept { return m_text.c_str(); }
    operator const char *() const noexcept { return m_text.c_str(); }
    std::size_t size() const noexcept { return m_text.size(); }
    std::size_t length() const noexcept { return m_text.size(); }
    std::size_t max_size() const noexcept { return m_text.max_size(); }
    bool empty() const noexcept { return m_text.empty(); }
    /// Unchecked; \p index must be below size().
    char &operator[](std::size_t index) { return m_text[index]; }
    char operator[](std::size_t index) const { return m_text[index]; }

    void clear() noexcept { m_text.clear(); }
    void resize(std::size_t count, char fill = '\0') { m_text.resize(count, fill); }
    void reserve(std::size_t count) { m_text.reserve(count); }
    void swap(gcstring &other) noexcept { m_text.swap(other.m_text); }

    /// Byte-wise comparison: negative, 0 or positive.
    int compare(const gcstring &other) const noexcept { return m_text.compare(other.m_text); }

    /// The find family returns the position of the first match at or after \p offset, or npos.
    std::size_t find(char ch, std::size_t offset = 0) const noexcept { return m_text.find(ch, offset); }
    std::size_t find(const gcstring &text, std::size_t offset = 0) const noexcept;
    /// Looks for the first \p count characters of \p text (all of them when it is shorter).
    std::size_t find(const gcstring &text, std::size_t offset, std::size_t count) const;
    std::size_t find_first_of(const gcstring &characters, std::size_t offset = 0) const noexcept;
    std::size_t find_first_not_of(const gcstring &characters, std::size_t offset = 0) const noexcept;

    /// At most \p count characters from \p offset on. \throws OutOfRangeException when \p offset is beyond size().
    gcstring substr(std::size_t offset = 0, std::size_t count = npos) const;

private:
    std::string m_text;
};

// The forms with const char* keep the conversion operator from turning these into pointer operations.
inline bool operator==(const gcstring &a, const gcstring &b) noexcept { return a.compare(b) == 0; }
inline bool operator==(const gcstring &a, const char *b) { return a.compare(b) == 0; }
inline bool operator==(const char *a, const gcstring &b) { return b.compare(a) == 0; }
inline bool operator!=(const gcstring &a, const gcstring &b) noexcept { return a.compare(b) != 0; }
inline bool operator!=(const gcstring &a, const char *b) { return a.compare(b) != 0; }
inline bool operator!=(const char *a, const gcstring &b) { return b.compare(a) != 0; }
inline bool operator<(const gcstring &a, const gcstring &b) noexcept { return a.compare(b) < 0; }
inline bool operator<(const gcstring &a, const char *b) { return a.compare(b) < 0; }
inline bool operator<(const char *a, const gcstring &b) { return b.compare(a) > 0; }
inline bool operator>(const gcstring &a, const gcstring &b) noexcept { return a.compare(b) > 0; }
inline bool operator>(const gcstring &a, const char *b) { return a.compare(b) > 0; }
inline bool operator>(const char *a, const gcstring &b) { return b.compare(a) < 0; }
inline bool operator<=(const gcstring &a, const gcstring &b) noexcept { return a.compare(b) <= 0; }
inline bool operator>=(const gcstring &a, const gcstring &b) noexcept { return a.compare(b) >= 0; }

inline gcstring operator+(gcstring a, const gcstring &b) { return std::move(a += b); }
inline gcstring operator+(gcstring a, const char *b) { return std::move(a += b); }
inline gcstring operator+(const char *a, const gcstring &b) { return gcstring(a) += b; }
inline gcstring operator+(gcstring a, char b) { return std::move(a += b); }
inline gcstring operator+(char a, const gcstring &b) { return gcstring(1, a) += b; }

std::ostream &operator<<(std::ostream &stream, const gcstring &text);
/// Reads one blank-delimited word, as std::string does.
std::istream &operator>>(std::istream &stream, gcstring &text);
/// Reads up to the next line feed, which is dropped.
std::istream &getline(std::istream &stream, gcstring &line);

} // namespace GenICam
