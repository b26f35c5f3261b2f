#include "commissioning/Counters.h"

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

namespace commissioning {

namespace {

struct Place {
    const char *group;
    const char *name;
    std::int64_t Counters::*value;
};

constexpr Place places[] = {
    {"Ip:", "InReceives", &Counters::received},          {"Ip:", "InDelivers", &Counters::delivered},
    {"Ip:", "ForwDatagrams", &Counters::forwarded},      {"Ip:", "InAddrErrors", &Counters::misaddressed},
    {"Ip:", "InHdrErrors", &Counters::malformed},        {"Ip:", "InDiscards", &Counters::discarded},
    {"Ip:", "InUnknownProtos", &Counters::unknown},      {"Ip:", "ReasmReqds", &Counters::pieces},
    {"Ip:", "ReasmOKs", &Counters::reassembled},         {"TcpExt:", "IPReversePathFilter", &Counters::filtered},
    {"IpExt:", "InNoRoutes", &Counters::unroutable},     {"IpExt:", "OutBcastPkts", &Counters::broadcasts},
    {"arp_cache", "table_fulls", &Counters::tableFulls},
};

void take(Counters &counters, const std::string &group, const std::string &name, std::int64_t value) {
    for (const Place &place : places) {
        if (group == place.group && name == place.name)
            counters.*place.value = value;
    }
}

/// Each group is a line of names and a line of values, both of which begin with the group.
void parse(Counters &counters, std::string_view text) {
    std::istringstream lines{std::string(text)};
    std::string names;
    std::string values;
    while (std::getline(lines, names) && std::getline(lines, values)) {
        std::istringstream nameWords(names);
        std::istringstream valueWords(values);
        std::string group;
        std::string sameGroup;
        std::string name;
        std::int64_t value = 0;
        if (!(nameWords >> group) || !(valueWords >> sameGroup) || group != sameGroup)
            return;
        while (nameWords >> name && valueWords >> value)
            take(counters, group, name, value);
    }
}

/// A line of names, and for each processor a line of hexadecimal numbers.
void parseTable(Counters &counters, std::string_view text) {
    std::istringstream lines{std::string(text)};
    std::string names;
    std::string values;
    std::getline(lines, names);
    while (std::getline(lines, values)) {
        std::istringstream nameWords(names);
        std::istringstream valueWords(values);
        std::string name;
        std::uint32_t value = 0;
        while (nameWords >> name && valueWords >> std::hex >> value) {
            if (name == "table_fulls")
                counters.tableFulls += value;
        }
    }
}

std::string contentOf(const char *path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

} // namespace

std::int64_t Counters::unexplained() const {
    std::uint64_t sum = 0; // unsigned, as counters from elsewhere may be anything
    for (const std::int64_t value : {received, reassembled})
        sum += static_cast<std::uint64_t>(value);
    for (const std::int64_t value :
         {delivered, forwarded, misaddressed, malformed, discarded, unknown, pieces, filtered, unroutable})
        sum -= static_cast<std::uint64_t>(value);
    return static_cast<std::int64_t>(sum);
}

Counters operator-(const Counters &after, const Counters &before) {
    Counters difference;
    for (const Place &place : places) // unsigned, so that counters that started anew do no harm
        difference.*place.value = static_cast<std::int64_t>(static_cast<std::uint64_t>(after.*place.value) -
                                                            static_cast<std::uint64_t>(before.*place.value));
    return difference;
}

Counters operator*(const Counters &counters, double factor) {
    Counters product;
    for (const Place &place : places)
        product.*place.value = static_cast<std::int64_t>(static_cast<double>(counters.*place.value) * factor);
    return product;
}

Counters parseCounters(std::string_view snmp, std::string_view netstat, std::string_view arpCache) {
    Counters counters;
    parse(counters, snmp);
    parse(counters, netstat);
    parseTable(counters, arpCache);
    return counters;
}

Counters readCounters() {
    return parseCounters(contentOf("/proc/thread-self/net/snmp"), contentOf("/proc/thread-self/net/netstat"),
                         contentOf("/proc/thread-self/net/stat/arp_cache"));
}

} // namespace commissioning
