#pragma once

#include "commissioning/Findings.h"

#include <array>
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <utility>

namespace commandline {

/// Replaces MACs, IPv4 addresses, serial numbers, user-defined names and the name of the host by others, each one by
/// the same wherever it stands. Addresses of one subnet stay so; those that mean the same everywhere (0.x, 127.x,
/// multicast and above, masks among them) stay as they are, of link-local ones the first half. What was replaced by
/// what is known to this object alone. Nothing must go through it twice.
class Redaction {
public:
    /// \param observation whose cameras' serial numbers and names are replaced. \param host its name.
    Redaction(const commissioning::Observation &observation, const std::string &host);

    commissioning::Inventory of(commissioning::Inventory inventory);
    /// Of a text that cameras have no part in: their words are common ones, perhaps.
    std::string hostText(const std::string &text) { return scanned(text, {}); }

private:
    using Words = std::map<std::string, std::string>;

    void redact(commissioning::Camera *pCamera);
    void redact(commissioning::Finding *pFinding);
    std::string text(const std::string &text) { return scanned(text, m_Words); }
    std::string scanned(const std::string &text, const Words &words);
    std::size_t replaceAt(std::size_t at, const std::string &text, const Words &words, std::string *pResult);
    commissioning::Address addressFor(commissioning::Address address);
    std::string macFor(const std::string &mac, const std::string &separator = "");
    void addWord(const char *kind, const std::string &word);

    std::mt19937 m_Random{std::random_device()()};
    std::array<std::uint8_t, 256> m_FirstBytes{};
    std::map<std::pair<int, commissioning::Address>, bool> m_Flips; ///< by bit and what is before it
    std::map<std::string, std::size_t> m_Macs; ///< twelve upper-case digits, and what number they get
    Words m_Words;
    std::string m_Host;
};

} // namespace commandline
