#pragma once

#include <cstdint>
#include <string_view>

namespace commissioning {

/// What the kernel counts of IPv4 datagrams in a network namespace, or the difference of two readings. They are the
/// host's: other traffic moves them too.
struct Counters {
    std::int64_t received = 0;     ///< Ip.InReceives
    std::int64_t delivered = 0;    ///< Ip.InDelivers
    std::int64_t forwarded = 0;    ///< Ip.ForwDatagrams
    std::int64_t misaddressed = 0; ///< Ip.InAddrErrors
    std::int64_t malformed = 0;    ///< Ip.InHdrErrors
    std::int64_t discarded = 0;    ///< Ip.InDiscards
    std::int64_t unknown = 0;      ///< Ip.InUnknownProtos
    std::int64_t pieces = 0;       ///< Ip.ReasmReqds
    std::int64_t reassembled = 0;  ///< Ip.ReasmOKs
    std::int64_t filtered = 0;     ///< TcpExt.IPReversePathFilter
    std::int64_t unroutable = 0;   ///< IpExt.InNoRoutes
    std::int64_t broadcasts = 0;   ///< IpExt.OutBcastPkts, which the kernel hands to this host as well
    std::int64_t tableFulls = 0;   ///< arp_cache.table_fulls: neighbours that the kernel's table had no room for

    /// Datagrams that arrived and of which no counter tells what became: dropped by a firewall, multicast that nobody
    /// joined, or from a sender that has an address of this host.
    std::int64_t unexplained() const;
};

Counters operator-(const Counters &after, const Counters &before);
/// What an interval that lasted so many times longer would have counted.
Counters operator*(const Counters &counters, double factor);

/// Reads those of the calling thread's network namespace; what the kernel does not tell is 0. Thread-safe.
Counters readCounters();
/// Of the texts of /proc/net/snmp, /proc/net/netstat and /proc/net/stat/arp_cache, which only the host's own namespace
/// has.
Counters parseCounters(std::string_view snmp, std::string_view netstat, std::string_view arpCache);

} // namespace commissioning
