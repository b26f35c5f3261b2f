#include "Text.h"

#include <algorithm>
#include <clocale>
#include <cwchar>
#include <cwctype>
#include <functional>

namespace commandline {

namespace {

/// UTF-8 for this thread, whatever the user's locale is, as long as it lives.
class Utf8Locale {
public:
    Utf8Locale() : m_Locale(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)), m_Before(uselocale(m_Locale)) {}
    ~Utf8Locale() {
        uselocale(m_Before);
        if (m_Locale)
            freelocale(m_Locale);
    }
    Utf8Locale(const Utf8Locale &) = delete;
    Utf8Locale &operator=(const Utf8Locale &) = delete;

private:
    locale_t m_Locale;
    locale_t m_Before;
};

/// Calls \p visit with each character and its bytes; with 0 and one byte for what is no UTF-8.
void forEachCharacter(const std::string &text, const std::function<void(wchar_t, const std::string &)> &visit) {
    const Utf8Locale utf8;
    for (std::size_t i = 0; i < text.size();) {
        std::mbstate_t state{};
        wchar_t character = 0;
        // NOLINTNEXTLINE(concurrency-mt-unsafe): the state is our own
        const std::size_t length = std::mbrtowc(&character, text.data() + i, text.size() - i, &state);
        const bool valid = length != 0 && length <= text.size() - i;
        visit(valid ? character : L'\0', text.substr(i, valid ? length : 1));
        i += valid ? length : 1;
    }
}

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
    forEachCharacter(text, [&](wchar_t character, const std::string &bytes) {
        if (character == 0)
            result += '?';
        else if (!isInvisible(character))
            result += bytes;
    });
    return result;
}

int displayWidth(const std::string &text) {
    int width = 0;
    forEachCharacter(text, [&](wchar_t character, const std::string &) { width += std::max(wcwidth(character), 0); });
    return width;
}

} // namespace commandline
