#include "MinimalCorvo/Utilities.h"

#include "Base/GCException.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>
#include <vector>

namespace Corvo {

namespace {

constexpr std::string_view WHITE_SPACE = " \t\n\v\f\r";

struct KeyAndValue {
    std::string_view key;
    std::string_view value;
};

std::string_view View(const String_t &text) { return {text.c_str(), text.size()}; }

String_t ToString(std::string_view text) { return std::string(text); }

std::string_view Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(WHITE_SPACE);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(WHITE_SPACE) - first + 1);
}

KeyAndValue SplitPair(std::string_view token) {
    const std::size_t sign = token.find('=');
    if (sign == std::string_view::npos)
        return {Trimmed(token), {}};
    return {Trimmed(token.substr(0, sign)), Trimmed(token.substr(sign + 1))};
}

/// Takes the next token off the front of the text; empty when there is none.
std::string_view NextToken(std::string_view &text, std::string_view delimiters) {
    text.remove_prefix(std::min(text.find_first_not_of(delimiters), text.size()));
    const std::string_view token = text.substr(0, text.find_first_of(delimiters));
    text.remove_prefix(token.size());
    return token;
}

/// The end of the reference at the start of the text, past its ")", or 0 when there is none.
std::size_t ReferenceEnd(std::string_view text) {
    constexpr std::size_t NAME = 2; // after "$("
    if (text.substr(0, NAME) != "$(")
        return 0;
    const std::size_t end = text.find(')', NAME);
    return end == std::string_view::npos || end == NAME ? 0 : end + 1;
}

int Expand(std::string_view text, String_t &expanded) {
    int references = 0;
    while (!text.empty()) {
        std::size_t taken = 1;
        if (text.substr(0, 2) == "$$") {
            taken = 2;
            expanded += '$';
        } else if (const std::size_t end = ReferenceEnd(text); end != 0) {
            taken = end;
            expanded += std::getenv(ToString(text.substr(2, end - 3)));
            ++references;
        } else {
            expanded += text.front();
        }
        text.remove_prefix(taken);
    }
    return references;
}

/// 0 to 15, or -1 for a character that is no hexadecimal digit.
int HexDigit(char character) {
    if (character >= '0' && character <= '9')
        return character - '0';
    if (character >= 'a' && character <= 'f')
        return character - 'a' + 10;
    if (character >= 'A' && character <= 'F')
        return character - 'A' + 10;
    return -1;
}

std::vector<unsigned char> DecodeHex(std::string_view text) {
    std::vector<unsigned char> bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        int byte = HexDigit(text[i]);
        if (byte < 0)
            continue;
        const int second = i + 1 < text.size() ? HexDigit(text[i + 1]) : -1;
        if (second >= 0) {
            byte = byte * 16 + second;
            ++i;
        }
        bytes.push_back(static_cast<unsigned char>(byte));
    }
    return bytes;
}

} // namespace

const char *getCorvoPathSeperator() { return "/"; }

const char *getCorvoPathListDelimiter() { return ":"; }

bool GetValueOfEnvironmentVariable(const String_t &name, String_t &value) {
    const char *found = std::getenv(name);
    if (found != nullptr)
        value = found;
    return found != nullptr;
}

int ExpandEnvironmentVariables(String_t &text) noexcept {
    constexpr std::size_t SHORTEST_REFERENCE = 4; // "$(X)"
    if (text.size() < SHORTEST_REFERENCE || text.find('$') == String_t::npos)
        return 0;
    try {
        String_t expanded;
        const int references = Expand(View(text), expanded);
        text.swap(expanded);
        return references;
    } catch (const std::exception &) {
        return -1;
    }
}

std::size_t HexEncodeString(const void *source, std::size_t count, char *destination, std::size_t size,
                            const char *separator) {
    const std::size_t separatorLength = separator != nullptr ? std::strlen(separator) : 0;
    const std::size_t length = count == 0 ? 0 : count * (2 + separatorLength) - separatorLength;
    if (destination == nullptr || size < length + 1)
        return length + 1;
    const auto *bytes = static_cast<const unsigned char *>(source);
    char *end = destination;
    for (std::size_t i = 0; i < count; ++i) {
        if (i > 0)
            end = std::copy_n(separator, separatorLength, end);
        *end++ = "0123456789abcdef"[bytes[i] >> 4];
        *end++ = "0123456789abcdef"[bytes[i] & 0xF];
    }
    *end = '\0';
    return length;
}

String_t HexEncodeString(const void *source, std::size_t count, const char *separator) {
    std::string text(HexEncodeString(source, count, nullptr, 0, separator), '\0');
    text.resize(HexEncodeString(source, count, text.data(), text.size(), separator));
    return text;
}

std::size_t HexDecodeString(const char *text, void *destination, std::size_t size) {
    const std::vector<unsigned char> bytes = DecodeHex(text != nullptr ? text : "");
    if (destination != nullptr && bytes.size() <= size)
        std::copy(bytes.begin(), bytes.end(), static_cast<unsigned char *>(destination));
    return bytes.size();
}

String_t HexDecodeString(const String_t &text) {
    const std::vector<unsigned char> bytes = DecodeHex(View(text));
    return std::string(bytes.begin(), bytes.end());
}

bool getKeyAndValueFromString(const char *text, const char *delimiters, std::size_t index, String_t *key,
                              String_t *value) {
    if (text == nullptr || delimiters == nullptr || (key == nullptr && value == nullptr))
        return false;
    std::string_view rest = text;
    std::string_view token = NextToken(rest, delimiters);
    for (; index > 0 && !token.empty(); --index)
        token = NextToken(rest, delimiters);
    const KeyAndValue pair = SplitPair(token);
    if (pair.key.empty() && pair.value.empty())
        return false;
    String_t keyText = ToString(pair.key);
    String_t valueText = ToString(pair.value);
    if (key != nullptr) // from here on the text may be gone: an output may be the string that holds it
        key->swap(keyText);
    if (value != nullptr)
        value->swap(valueText);
    return true;
}

bool getValueByKeyFromString(const char *text, const char *delimiters, const char *key, String_t &value) {
    if (text == nullptr || delimiters == nullptr || key == nullptr)
        return false;
    std::string_view rest = text;
    for (std::string_view token = NextToken(rest, delimiters); !token.empty(); token = NextToken(rest, delimiters)) {
        const KeyAndValue pair = SplitPair(token);
        if (pair.key == key) {
            value = ToString(pair.value);
            return true;
        }
    }
    return false;
}

bool extractSubString(const String_t &text, const String_t &separator, std::size_t index, String_t &piece) {
    std::size_t start = 0;
    std::size_t end = separator.empty() ? String_t::npos : text.find(separator);
    for (; index > 0 && end != String_t::npos; --index) {
        start = end + separator.size();
        end = text.find(separator, start);
    }
    if (index > 0)
        return false;
    piece = text.substr(start, end - start);
    return true;
}

String_t DottedQuad(std::uint32_t address) {
    const in_addr network{htonl(address)};
    char text[INET_ADDRSTRLEN];
    return inet_ntop(AF_INET, &network, text, sizeof text);
}

bool ParseDottedQuad(const char *text, std::uint32_t &address) {
    in_addr network{};
    if (inet_pton(AF_INET, text, &network) != 1)
        return false;
    address = ntohl(network.s_addr);
    return true;
}

String_t itos(unsigned int number) { return std::to_string(number); }

String_t replaceSpacesWith20(const String_t &text) {
    String_t result;
    for (const char character : View(text)) {
        if (character == ' ')
            result += "%20";
        else
            result += character;
    }
    return result;
}

void textFileToString(const String_t &fileName, String_t &text) {
    std::ifstream file(fileName.c_str(), std::ios::binary);
    if (file.is_open())
        file.peek(); // a folder can be opened, but not read
    if (!file.is_open() || file.bad())
        throw RUNTIME_EXCEPTION("Failed to open file '%s': %s", fileName.c_str(),
                                std::generic_category().message(errno).c_str());
    text = std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

} // namespace Corvo
