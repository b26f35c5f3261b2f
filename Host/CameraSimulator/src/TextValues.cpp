#include "TextValues.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <sstream>

namespace camsim {

std::string trimmed(const std::string &text) {
    const char *blanks = " \t\r";
    const auto first = text.find_first_not_of(blanks);
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::vector<std::string> splitAt(const std::string &text, char separator) {
    std::vector<std::string> parts(1);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 1 < text.size() && text[i + 1] == separator)
            parts.back() += text[++i];
        else if (text[i] == separator)
            parts.emplace_back();
        else
            parts.back() += text[i];
    }
    return parts;
}

std::vector<std::string> splitWords(const std::string &text) {
    std::istringstream stream(text);
    std::vector<std::string> words;
    for (std::string word; stream >> word;)
        words.push_back(word);
    return words;
}

std::uint64_t toNumber(const std::string &text, std::uint64_t max) {
    const bool hex = text.rfind("0x", 0) == 0 || text.rfind("0X", 0) == 0;
    const char *first = text.data() + (hex ? 2 : 0);
    const char *last = text.data() + text.size();
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(first, last, value, hex ? 16 : 10);
    if (error != std::errc() || end != last || value > max)
        throw std::invalid_argument("'" + text + "' is no number of 0 to " + std::to_string(max));
    return value;
}

std::uint32_t toWord(const std::string &text) {
    return static_cast<std::uint32_t>(toNumber(text, std::numeric_limits<std::uint32_t>::max()));
}

std::chrono::milliseconds toMilliseconds(const std::string &text) { return std::chrono::milliseconds(toWord(text)); }

double toPercent(const std::string &text) {
    char *end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !(value >= 0 && value <= 100))
        throw std::invalid_argument("'" + text + "' is no percentage of 0 to 100");
    return value;
}

bool toBool(const std::string &text) { return toChoice<bool>(text, {{"yes", true}, {"no", false}}); }

IpSettings toIpSettings(const std::string &text) {
    const auto words = splitWords(text);
    const auto slash = words.empty() ? std::string::npos : words[0].find('/');
    const bool hasGateway = words.size() == 3 && words[1] == "via";
    if (slash == std::string::npos || (words.size() != 1 && !hasGateway))
        throw std::invalid_argument("'" + text + "' is not of the form ADDRESS/PREFIX or ADDRESS/PREFIX via GATEWAY");
    return {Ipv4::parse(words[0].substr(0, slash)),
            Ipv4::maskOf(static_cast<unsigned>(toNumber(words[0].substr(slash + 1), 32))),
            hasGateway ? Ipv4::parse(words[2]) : Ipv4{}};
}

std::string countedUp(const std::string &text, std::uint32_t step) {
    auto digits = text.size();
    while (digits > 0 && text.size() - digits < 9 && std::isdigit(static_cast<unsigned char>(text[digits - 1])) != 0)
        --digits;
    if (digits == text.size())
        return text;
    const std::uint64_t number = toNumber(text.substr(digits), std::numeric_limits<std::uint32_t>::max()) + step;
    const std::string counted = std::to_string(number);
    const std::size_t width = text.size() - digits;
    return text.substr(0, digits) + std::string(width - std::min(width, counted.size()), '0') + counted;
}

} // namespace camsim
