#include "commissioning/AddressText.h"

namespace commissioning {

std::string toText(Address address) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8)
        text += std::to_string(address >> shift & 0xFF) + (shift > 0 ? "." : "");
    return text;
}

std::string toText(const AdapterAddress &a) { return toText(a.address) + "/" + std::to_string(prefixLength(a.mask)); }

std::string holderText(const Holder &holder) {
    std::string text = toText(holder.address) + ":" + std::to_string(holder.port);
    if (holder.process)
        text += " (" + holder.process->name + ", process " + std::to_string(holder.process->id) + ")";
    return text;
}

std::string macText(const std::string &mac) {
    if (mac.size() != 12)
        return mac;
    std::string text = mac;
    for (std::size_t i = 10; i > 0; i -= 2)
        text.insert(i, ":");
    return text;
}

unsigned prefixLength(Address mask) {
    unsigned length = 0;
    while (length < 32 && (mask << length & 0x80000000U) != 0)
        ++length;
    return length;
}

} // namespace commissioning
