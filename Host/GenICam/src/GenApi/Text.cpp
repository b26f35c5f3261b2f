#include "Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>
#include <locale>
#include <sstream>

namespace GenApi {

namespace {

bool IsBlank(char ch) { return ch == ' ' || ch == '\t' || ch == '\r' || ch == '\n'; }
char Lower(char ch) { return ch >= 'A' && ch <= 'Z' ? static_cast<char>(ch + ('a' - 'A')) : ch; }

bool TakeSign(std::string_view &text) {
    if (text.empty() || (text.front() != '-' && text.front() != '+'))
        return false;
    const bool negative = text.front() == '-';
    text.remove_prefix(1);
    return negative;
}

bool TakeHexPrefix(std::string_view &text) {
    if (text.size() < 3 || text[0] != '0' || Lower(text[1]) != 'x')
        return false;
    text.remove_prefix(2);
    return true;
}

std::optional<uint64_t> ParseMagnitude(std::string_view text, int base) {
    uint64_t magnitude = 0;
    const char *end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, magnitude, base);
    if (result.ec != std::errc() || result.ptr != end)
        return std::nullopt;
    return magnitude;
}

/// Groups of one byte each, as in 192.168.0.1 or 00:11:22:33:44:55, most significant first.
std::optional<int64_t> ParseGroups(std::string_view text, char separator, int groups, int base) {
    uint64_t value = 0;
    for (int group = 0; group < groups; ++group) {
        const std::size_t end = group + 1 < groups ? text.find(separator) : text.size();
        if (end == std::string_view::npos)
            return std::nullopt;
        const auto byte = ParseMagnitude(text.substr(0, end), base);
        if (!byte || *byte > 0xFF)
            return std::nullopt;
        value = value << 8 | *byte;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return static_cast<int64_t>(value);
}

/// What is beyond double becomes the largest double, or zero. Streams know that and take no notice of the locale here.
double NearestDouble(std::string_view digits) {
    std::istringstream text{std::string(digits)};
    text.imbue(std::locale::classic());
    double value = 0;
    text >> value;
    return value;
}

std::string FormatGroups(int64_t value, bool hexadecimal, char separator, int groups) {
    std::string text;
    for (int shift = 8 * (groups - 1); shift >= 0; shift -= 8) {
        char group[8];
        const auto byte = static_cast<unsigned>(static_cast<uint64_t>(value) >> shift & 0xFF);
        std::snprintf(group, sizeof group, hexadecimal ? "%02x" : "%u", byte);
        text += group;
        if (shift > 0)
            text += separator;
    }
    return text;
}

} // namespace

std::string_view Trim(std::string_view text) {
    while (!text.empty() && IsBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return Lower(x) == Lower(y); });
}

bool IsYes(std::string_view text) { return EqualsNoCase(text, "yes") || EqualsNoCase(text, "true") || text == "1"; }

std::optional<int64_t> ParseInteger(std::string_view text) {
    text = Trim(text);
    const bool negative = TakeSign(text);
    const int base = TakeHexPrefix(text) ? 16 : 10;
    const auto magnitude = ParseMagnitude(text, base);
    if (!magnitude)
        return std::nullopt;
    constexpr uint64_t signBit = uint64_t{1} << 63;
    if (negative && *magnitude > signBit)
        return std::nullopt;
    return static_cast<int64_t>(negative ? 0 - *magnitude : *magnitude);
}

std::optional<double> ParseFloat(std::string_view text) {
    text = Trim(text);
    std::string_view digits = text;
    const bool negative = TakeSign(digits);
    double value = 0;
    if (TakeHexPrefix(digits)) {
        const auto magnitude = ParseMagnitude(digits, 16);
        if (!magnitude)
            return std::nullopt;
        value = static_cast<double>(*magnitude);
    } else {
        // from_chars would take a second sign.
        if (digits.empty() || digits.front() == '-')
            return std::nullopt;
        const char *end = digits.data() + digits.size();
        const auto result = std::from_chars(digits.data(), end, value);
        if (result.ec == std::errc::invalid_argument || result.ptr != end)
            return std::nullopt;
        if (result.ec == std::errc::result_out_of_range)
            value = NearestDouble(digits);
    }
    return negative ? -value : value;
}

int64_t ClampToInteger(double value) {
    constexpr double limit = 9223372036854775808.0; // 2^63
    if (!(value > -limit))
        return std::numeric_limits<int64_t>::min();
    return value >= limit ? std::numeric_limits<int64_t>::max() : static_cast<int64_t>(value);
}

std::optional<int64_t> ParseMaximum(std::string_view text) {
    const auto real = ParseFloat(text);
    const auto integer = ParseInteger(text);
    const bool isBeyond = real && (!integer || (*real > 0 && *integer < 0));
    return isBeyond ? std::optional(ClampToInteger(std::floor(*real))) : integer;
}

std::string FormatInteger(int64_t value, ERepresentation representation) {
    switch (representation) {
    case HexNumber: {
        char text[24];
        std::snprintf(text, sizeof text, "0x%llX", static_cast<unsigned long long>(value));
        return text;
    }
    case IPV4Address:
        return FormatGroups(value, false, '.', 4);
    case MACAddress:
        return FormatGroups(value, true, ':', 6);
    default:
        return std::to_string(value);
    }
}

std::optional<int64_t> ParseIntegerAs(std::string_view text, ERepresentation representation) {
    text = Trim(text);
    std::optional<int64_t> value;
    if (representation == IPV4Address)
        value = ParseGroups(text, '.', 4, 10);
    else if (representation == MACAddress)
        value = ParseGroups(text, ':', 6, 16);
    return value ? value : ParseInteger(text);
}

std::string FormatFloat(double value, EDisplayNotation notation, int precision) {
    char text[512];
    std::chars_format format = std::chars_format::general;
    if (notation == fnFixed)
        format = std::chars_format::fixed;
    else if (notation == fnScientific)
        format = std::chars_format::scientific;
    const auto result = precision < 0 ? std::to_chars(text, text + sizeof text, value, format)
                                      : std::to_chars(text, text + sizeof text, value, format, precision);
    return result.ec == std::errc() ? std::string(text, result.ptr) : std::to_string(value);
}

std::string FormatBytes(const std::vector<uint8_t> &bytes) {
    static const char digits[] = "0123456789abcdef";
    std::string text = "0x";
    text.reserve(2 + 2 * bytes.size());
    for (const uint8_t byte : bytes) {
        text += digits[byte >> 4];
        text += digits[byte & 0xF];
    }
    return text;
}

std::optional<std::vector<uint8_t>> ParseBytes(std::string_view text) {
    text = Trim(text);
    TakeHexPrefix(text);
    if (text.size() % 2 != 0)
        return std::nullopt;
    std::vector<uint8_t> bytes;
    bytes.reserve(text.size() / 2);
    for (; !text.empty(); text.remove_prefix(2)) {
        const auto byte = ParseMagnitude(text.substr(0, 2), 16);
        if (!byte)
            return std::nullopt;
        bytes.push_back(static_cast<uint8_t>(*byte));
    }
    return bytes;
}

} // namespace GenApi
