#include "Utf8.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace GxImp {

namespace {

/// Length of the well-formed sequence at text, 0 when there is none. The terminator ends a sequence like any byte that
/// does not continue it, so nothing beyond it is read.
std::size_t SequenceLength(const std::uint8_t *text) noexcept {
    const auto continues = [text](std::size_t i, std::uint8_t low = 0x80, std::uint8_t high = 0xBF) {
        return text[i] >= low && text[i] <= high;
    };
    const std::uint8_t first = text[0];
    if (first < 0x80)
        return 1;
    if (first >= 0xC2 && first <= 0xDF)
        return continues(1) ? 2 : 0;
    if (first >= 0xE0 && first <= 0xEF) {
        // E0 must not be over-long, ED must not encode a surrogate.
        const bool second = continues(1, first == 0xE0 ? 0xA0 : 0x80, first == 0xED ? 0x9F : 0xBF);
        return second && continues(2) ? 3 : 0;
    }
    if (first >= 0xF0 && first <= 0xF4) {
        // F0 must not be over-long, F4 must not exceed U+10FFFF.
        const bool second = continues(1, first == 0xF0 ? 0x90 : 0x80, first == 0xF4 ? 0x8F : 0xBF);
        return second && continues(2) && continues(3) ? 4 : 0;
    }
    return 0;
}

void EncodeByte(std::uint8_t byte, char *out) noexcept {
    const unsigned codePoint = 0xDC00u + byte;
    out[0] = static_cast<char>(0xE0 | codePoint >> 12);
    out[1] = static_cast<char>(0x80 | (codePoint >> 6 & 0x3F));
    out[2] = static_cast<char>(0x80 | (codePoint & 0x3F));
}

/// Writes the encoded text to out, if not null, and returns its length.
std::size_t Encode(const char *text, char *out) noexcept {
    std::size_t length = 0;
    while (*text != '\0') {
        const std::size_t sequence = SequenceLength(reinterpret_cast<const std::uint8_t *>(text));
        if (out && sequence != 0)
            std::memcpy(out + length, text, sequence);
        else if (out)
            EncodeByte(static_cast<std::uint8_t>(*text), out + length);
        length += sequence != 0 ? sequence : 3;
        text += sequence != 0 ? sequence : 1;
    }
    return length;
}

} // namespace

char *EncodeUtf8(const char *text, std::size_t &length) noexcept {
    length = Encode(text, nullptr);
    auto *result = static_cast<char *>(std::malloc(length + 1));
    if (!result)
        return nullptr;
    Encode(text, result);
    result[length] = '\0';
    return result;
}

} // namespace GxImp
