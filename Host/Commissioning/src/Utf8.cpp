#include "commissioning/Utf8.h"

#include <clocale>
#include <cwchar>

namespace commissioning {

namespace {

/// UTF-8 for this thread, whatever the user's locale is, as long as it lives.
class Utf8Locale {
public:
    Utf8Locale() : m_Before(uselocale(shared())) {}
    ~Utf8Locale() { uselocale(m_Before); }
    Utf8Locale(const Utf8Locale &) = delete;
    Utf8Locale &operator=(const Utf8Locale &) = delete;

private:
    /// Loaded once, from a file: that takes longer than most texts.
    static locale_t shared() {
        static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return locale;
    }

    locale_t m_Before;
};

} // namespace

void forEachCharacter(std::string_view text, const std::function<void(wchar_t, std::string_view)> &visit) {
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

} // namespace commissioning
