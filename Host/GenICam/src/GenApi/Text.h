#pragma once

#include "GenApi/Types.h"

#include <optional>
#include <string>
#include <string_view>

namespace GenApi {

/// Number and text forms of the description file. All parsers accept blanks around the text and nothing else beside it.

std::string_view Trim(std::string_view text);
bool EqualsNoCase(std::string_view a, std::string_view b);
/// "Yes", "true" or "1" in any case.
bool IsYes(std::string_view text);

/// Decimal or 0x-hexadecimal with an optional sign. Values above INT64_MAX up to UINT64_MAX become two's complement.
std::optional<int64_t> ParseInteger(std::string_view text);
/// Decimal or scientific, "INF", "-INF", "NaN", or a hexadecimal integer without two's complement. What is beyond
/// double becomes the largest double or zero.
std::optional<double> ParseFloat(std::string_view text);
/// A highest value: as an integer above, but numbers without sign never become negative, and fractions are cut off.
/// What is beyond 64 bits ("0xFFFFFFFFFFFFFFFF" in files that want to say "no limit") becomes INT64_MAX.
std::optional<int64_t> ParseMaximum(std::string_view text);
/// Cuts off fractions; numbers beyond 64 bits become the nearest integer there is, NaN the lowest.
int64_t ClampToInteger(double value);

/// In the form its representation asks for: hexadecimal, dotted IPv4 address, colon-separated MAC address or decimal.
std::string FormatInteger(int64_t value, ERepresentation representation);
/// The reverse; a decimal or hexadecimal number is accepted in every representation.
std::optional<int64_t> ParseIntegerAs(std::string_view text, ERepresentation representation);
/// \param precision digits, or -1 for as many as it takes to read the same value back.
std::string FormatFloat(double value, EDisplayNotation notation, int precision);
/// "0x" and two digits per byte.
std::string FormatBytes(const std::vector<uint8_t> &bytes);
std::optional<std::vector<uint8_t>> ParseBytes(std::string_view text);

} // namespace GenApi
