#include "Text.h"

#include "commissioning/Utf8.h"

#include <algorithm>
#include <cwchar>
#include <cwctype>

using commissioning::forEachCharacter;

namespace commandline {

namespace {

/// Directional marks, embeddings, overrides and isolates, zero-width characters, separators.
bool isInvisible(wchar_t character) {
    const auto within = [character](wchar_t first, wchar_t last) { return character >= first && character <= last; };
    return std::iswcntrl(static_cast<std::wint_t>(character)) != 0 || within(0x80, 0x9F) || within(0x200B, 0x200F) ||
           within(0x2028, 0x202E) || within(0x2060, 0x206F) || character == 0xAD || character == 0x61C ||
           character == 0xFEFF;
}

} // namespace

std::string harmless(const std::string &text) {
    std::string result;
    forEachCharacter(text, [&](wchar_t character, std::string_view bytes) {
        if (character == 0)
            result += '?';
        else if (!isInvisible(character))
            result += bytes;
    });
    return result;
}

std::string counted(std::size_t count, const std::string &what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

int displayWidth(const std::string &text) {
    int width = 0;
    forEachCharacter(text, [&](wchar_t character, std::string_view) { width += std::max(wcwidth(character), 0); });
    return width;
}

} // namespace commandline
