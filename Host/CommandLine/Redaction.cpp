#include "Redaction.h"

#include "commissioning/AddressRules.h"
#include "commissioning/AddressText.h"
#include "commissioning/Parsing.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <numeric>
#include <regex>

using namespace commissioning;

namespace commandline {

namespace {

constexpr unsigned Loopback = 127, Multicast = 224; // first bytes

bool isWordByte(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return std::isalnum(byte) != 0 || byte >= 0x80 || c == '_';
}

/// What matches at a place; empty when nothing does.
std::string matchAt(std::size_t at, const std::string &text, const std::regex &pattern) {
    std::smatch match;
    const auto begin = text.begin() + static_cast<std::ptrdiff_t>(at);
    return std::regex_search(begin, text.end(), match, pattern, std::regex_constants::match_continuous) ? match.str()
                                                                                                        : "";
}

bool isWholeAt(std::size_t at, const std::string &text, const std::string &word) {
    const std::size_t end = at + word.size();
    return !word.empty() && text.compare(at, word.size(), word) == 0 &&
           (at == 0 || !isWordByte(text[at - 1]) || !isWordByte(word.front())) &&
           (end == text.size() || !isWordByte(text[end]) || !isWordByte(word.back()));
}

} // namespace

Redaction::Redaction(const Observation &observation, const std::string &host) {
    std::iota(m_FirstBytes.begin(), m_FirstBytes.end(), std::uint8_t{0});
    std::shuffle(m_FirstBytes.begin() + 1, m_FirstBytes.begin() + Loopback, m_Random);
    std::shuffle(m_FirstBytes.begin() + Loopback + 1, m_FirstBytes.begin() + Multicast, m_Random);
    for (const Adapter &adapter : observation.adapters)
        macFor(adapter.mac);
    for (const Camera &camera : observation.cameras) {
        macFor(camera.mac);
        addWord("SERIAL", camera.serial);
        addWord("NAME", camera.name);
    }
    for (const Answer &answer : observation.answers) // of two cameras with one MAC both
        addWord("SERIAL", answer.serial);
    addWord("HOST", host);
    m_Host = host;
}

void Redaction::addWord(const char *kind, const std::string &word) {
    m_Words.try_emplace(word, word.empty() ? "" : kind + ("-" + std::to_string(m_Words.size() + 1)));
}

Inventory Redaction::of(Inventory inventory) {
    for (Adapter &adapter : inventory.adapters) {
        adapter.name = hostText(adapter.name); // some are named by their MAC
        adapter.mac = macFor(adapter.mac);
        for (AdapterAddress &own : adapter.addresses)
            own.address = addressFor(own.address);
    }
    for (Camera &camera : inventory.cameras)
        redact(&camera);
    for (Finding &finding : inventory.findings)
        redact(&finding);
    return inventory;
}

void Redaction::redact(Camera *pCamera) {
    pCamera->mac = macFor(pCamera->mac);
    pCamera->serial = m_Words.at(pCamera->serial);
    pCamera->name = m_Words.at(pCamera->name);
    for (std::string *other : {&pCamera->vendor, &pCamera->model, &pCamera->statusReason})
        *other = text(*other);
    for (std::string &name : pCamera->adapters)
        name = hostText(name);
    for (Address *address : {&pCamera->address, &pCamera->gateway})
        *address = addressFor(*address);
    if (pCamera->stored) {
        pCamera->stored->address = addressFor(pCamera->stored->address);
        pCamera->stored->gateway = addressFor(pCamera->stored->gateway);
    }
    if (pCamera->holder)
        pCamera->holder->address = addressFor(pCamera->holder->address);
}

void Redaction::redact(Finding *pFinding) {
    pFinding->adapter = hostText(pFinding->adapter);
    pFinding->camera = macFor(pFinding->camera);
    pFinding->text = text(pFinding->text);
    for (std::string &remedy : pFinding->remedies)
        remedy = text(remedy);
    for (auto &[key, value] : pFinding->evidence) {
        if (auto *words = std::get_if<std::string>(&value))
            *words = text(*words);
    }
}

Address Redaction::addressFor(Address address) {
    const Address first = address >> 24;
    if (first == 0 || first == Loopback || first >= Multicast)
        return address;
    const int kept = isLinkLocal(address) ? 16 : 24; // bits below those that are no chance of their own
    Address result = kept == 16 ? address & 0xFFFF0000 : Address{m_FirstBytes[first]} << 24;
    for (int bit = kept - 1; bit >= 0; --bit) {
        const auto [flip, isNew] = m_Flips.try_emplace({bit, address >> bit >> 1});
        if (isNew)
            flip->second = (m_Random() & 1) != 0;
        result |= ((address >> bit & 1) ^ (flip->second ? 1u : 0u)) << bit;
    }
    return result;
}

std::string Redaction::macFor(const std::string &mac, const std::string &separator) {
    if (mac.empty())
        return mac;
    const std::size_t number = m_Macs.try_emplace(mac, m_Macs.size() + 1).first->second;
    char text[sizeof "020000000001"];
    std::snprintf(text, sizeof text, "0200%08X", static_cast<unsigned>(number)); // locally administered
    std::string result(text, 2);
    for (std::size_t i = 2; i < 12; i += 2)
        result += separator + std::string(text + i, 2);
    return result;
}

std::string Redaction::scanned(const std::string &text, const Words &words) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = replaceAt(at, text, words, &result);
        if (length == 0)
            result += text[at];
        at += std::max<std::size_t>(length, 1);
    }
    return result;
}

/// \returns how many bytes were replaced; 0 for none.
std::size_t Redaction::replaceAt(std::size_t at, const std::string &text, const Words &words, std::string *pResult) {
    static const std::regex quad(R"(\d{1,3}(\.\d{1,3}){3})");
    static const std::regex mac("[0-9A-Fa-f]{2}([:-]?)[0-9A-Fa-f]{2}(\\1[0-9A-Fa-f]{2}){4}");
    if (std::isxdigit(static_cast<unsigned char>(text[at])) != 0) {
        const std::string digits = matchAt(at, text, mac);
        // Without separators it may be any number; "enx" names adapters after what their MAC was once.
        const bool isName = at >= 3 && text.compare(at - 3, 3, "enx") == 0;
        if (digits.size() > 12 || (isName && !digits.empty()) || m_Macs.count(macFrom(digits)) != 0) {
            *pResult += macFor(macFrom(digits), digits.size() > 12 ? digits.substr(2, 1) : "");
            return digits.size();
        }
        const std::string dotted = matchAt(at, text, quad);
        if (const auto address = addressFrom(dotted)) {
            *pResult += toText(addressFor(*address));
            return dotted.size();
        }
    }
    if (isWholeAt(at, text, m_Host)) {
        *pResult += m_Words.at(m_Host);
        return m_Host.size();
    }
    for (auto entry = words.rbegin(); entry != words.rend(); ++entry) { // a longer one before what it begins with
        if (isWholeAt(at, text, entry->first)) {
            *pResult += entry->second;
            return entry->first.size();
        }
    }
    return 0;
}

} // namespace commandline
