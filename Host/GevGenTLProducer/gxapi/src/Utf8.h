#pragma once

#include <cstddef>

namespace GxImp {

/// Re-encodes a text as UTF-8: well-formed sequences are kept, every other byte b is written as the 3-byte sequence of
/// the code point 0xDC00 + b. Returns a new allocation (release with free) or null when memory is exhausted.
///
/// \param length receives the length of the result without its terminator.
[[nodiscard]] char *EncodeUtf8(const char *text, std::size_t &length) noexcept;

} // namespace GxImp
