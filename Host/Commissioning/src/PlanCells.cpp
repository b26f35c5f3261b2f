#include "PlanCells.h"

#include "commissioning/AddressRules.h"
#include "commissioning/AddressText.h"
#include "commissioning/Parsing.h"
#include "commissioning/Plan.h"
#include "commissioning/Words.h"

#include <algorithm>
#include <strings.h>

namespace commissioning {

namespace {

constexpr Mode Modes[] = {Mode::Static, Mode::Dhcp, Mode::Auto};

std::string notA(const char *what, const std::string &text) { return quoted(text) + " is not " + what + "."; }

std::string takeMode(const std::string &text, PlanEntry *pEntry) {
    const auto *const mode = std::find_if(std::begin(Modes), std::end(Modes),
                                          [&](Mode each) { return strcasecmp(toText(each), text.c_str()) == 0; });
    if (mode == std::end(Modes))
        return quoted(text) + " is no mode. The modes are static, dhcp and auto.";
    pEntry->mode = *mode;
    return "";
}

/// A mask comes with the address, from a cell of its own, or both.
std::string takeMask(const std::string &text, PlanEntry *pEntry) {
    const std::optional<Address> mask = maskFrom(text);
    if (!mask)
        return notA("a subnet mask", text);
    const bool differs = pEntry->mask && *mask != *pEntry->mask;
    pEntry->mask = mask;
    return differs ? "The mask and the prefix of the address differ." : "";
}

std::string takeAddress(const std::string &text, PlanEntry *pEntry) {
    const std::size_t slash = text.find('/');
    pEntry->address = addressFrom(trimmed(text.substr(0, slash)));
    if (!pEntry->address)
        return notA("an IPv4 address", text);
    return slash == std::string::npos ? "" : takeMask(trimmed(text.substr(slash)), pEntry);
}

std::string takeGateway(const std::string &text, PlanEntry *pEntry) {
    pEntry->gateway = addressFrom(text);
    return pEntry->gateway ? "" : notA("an IPv4 address", text);
}

std::string takeName(const std::string &text, PlanEntry *pEntry) {
    if (text.size() > MaxPlanNameBytes)
        return "The name has " + std::to_string(text.size()) + " bytes. At most 16 are possible.";
    pEntry->name = text;
    return "";
}

std::string textOf(const std::optional<Address> &address) { return address ? toText(*address) : ""; }

} // namespace

std::string trimmed(std::string_view text) {
    constexpr std::string_view blanks[] = {" ", "\t", "\r", "\n", "\u00A0", "\u202F", "\u200B", "\uFEFF"};
    for (bool again = true; again;) {
        again = false;
        for (const std::string_view blank : blanks) {
            const bool begins = text.substr(0, blank.size()) == blank;
            const bool ends =
                !begins && text.size() >= blank.size() && text.substr(text.size() - blank.size()) == blank;
            text.remove_prefix(begins ? blank.size() : 0);
            text.remove_suffix(ends ? blank.size() : 0);
            again = again || begins || ends;
        }
    }
    return std::string(text);
}

std::string takePlanCell(const std::string &text, PlanColumn column, PlanEntry *pEntry) {
    switch (column) {
    case PlanColumn::Camera:
        pEntry->camera = text;
        break;
    case PlanColumn::Mode:
        return takeMode(text, pEntry);
    case PlanColumn::IpAddress:
        return takeAddress(text, pEntry);
    case PlanColumn::Mask:
        return takeMask(text, pEntry);
    case PlanColumn::Gateway:
        return takeGateway(text, pEntry);
    case PlanColumn::Name:
        return takeName(text, pEntry);
    }
    return "";
}

std::string planCell(const PlanEntry &entry, PlanColumn column) {
    switch (column) {
    case PlanColumn::Camera:
        break;
    case PlanColumn::Mode:
        return entry.mode ? toText(*entry.mode) : "";
    case PlanColumn::IpAddress:
        return textOf(entry.address);
    case PlanColumn::Mask:
        return textOf(entry.mask);
    case PlanColumn::Gateway:
        return textOf(entry.gateway);
    case PlanColumn::Name:
        return entry.name.value_or("");
    }
    return entry.camera;
}

} // namespace commissioning
