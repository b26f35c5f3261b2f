#include "commissioning/Parsing.h"

#include "commissioning/AddressRules.h"
#include "commissioning/AddressText.h"

#include <cctype>
#include <charconv>

namespace commissioning {

Address maskOfPrefix(unsigned length) { return length == 0 ? 0 : ~Address{0} << (32 - length); }

std::optional<Address> maskFrom(const std::string &text) {
    if (const auto dotted = addressFrom(text))
        return *dotted == maskOfPrefix(prefixLength(*dotted)) ? dotted : std::nullopt;
    const std::size_t start = text.rfind('/', 0) == 0 ? 1 : 0;
    unsigned length = 0;
    const char *end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data() + start, end, length);
    if (error != std::errc() || last != end || length > 32)
        return std::nullopt;
    return maskOfPrefix(length);
}

std::string macFrom(const std::string &text) {
    constexpr std::size_t Digits = 12;
    std::string mac;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (std::isxdigit(byte) != 0)
            mac += static_cast<char>(std::toupper(byte));
        else if (std::string(":-. ").find(character) == std::string::npos)
            return {};
    }
    return mac.size() == Digits ? mac : std::string();
}

} // namespace commissioning
