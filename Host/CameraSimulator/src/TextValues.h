#pragma once

#include "camsim/Address.h"

#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace camsim {

// Values of options and scene files. All to...() functions throw std::invalid_argument that says what is wrong.

std::string trimmed(const std::string &text);
/// Parts between separators; a backslash before a separator makes it part of the text.
std::vector<std::string> splitAt(const std::string &text, char separator);
std::vector<std::string> splitWords(const std::string &text);

/// Decimal or, with "0x", hexadecimal.
std::uint64_t toNumber(const std::string &text, std::uint64_t max);
std::uint32_t toWord(const std::string &text);
std::chrono::milliseconds toMilliseconds(const std::string &text);
double toPercent(const std::string &text);
bool toBool(const std::string &text); ///< "yes" or "no"
/// "192.168.1.10/24" or "192.168.1.10/24 via 192.168.1.1"
IpSettings toIpSettings(const std::string &text);

/// The text with the number at its end increased and its width kept; a text without one stays.
std::string countedUp(const std::string &text, std::uint32_t step);

template <typename Value>
Value toChoice(const std::string &text, std::initializer_list<std::pair<const char *, Value>> choices) {
    std::string names;
    for (const auto &[name, value] : choices) {
        if (text == name)
            return value;
        names += names.empty() ? name : std::string(", ") + name;
    }
    throw std::invalid_argument("'" + text + "' is none of " + names);
}

} // namespace camsim
