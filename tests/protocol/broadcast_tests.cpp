// The broadcast commands on a scripted network: three adapters, the sockets of which are the rows.

#include "Found.h"
#include "gxapi/ForceIp.h"
#include "gxapi/SetIpConfiguration.h"
#include "support/ScriptedNetwork.h"
#include "support/ScriptedPeer.h"
#include "support/SocketAddress.h"
#include "support/TraceLog.h"

#include <cerrno>
#include <gmock/gmock.h>

using Gx::Enumerator;

namespace {

constexpr std::uint8_t Mac[] = {2, 0x5A, 0xE3, 0, 0, 2};

GXSTATUS force(const char *ip) {
    return Gx::ForceIp(Mac, SocketAddress(ip), SocketAddress("255.255.255.0"), SocketAddress("0.0.0.0"), 0);
}

GXSTATUS configure(bool broadcastAck) {
    return Gx::SetIpConfiguration(Mac, {}, SocketAddress("10.0.0.60"), SocketAddress("255.255.255.0"), nullptr, nullptr,
                                  broadcastAck, 400);
}

GXSTATUS find(std::uint32_t flags) { return Enumerator::Discover(nullptr, Timeout_ms, flags, nullptr); }

/// On the wire what comes back to the first adapter, from a neighbour unless the sender is given.
Arrival arrival(Bytes datagram, std::uint32_t after_ms = 0, in_addr_t sender = 0x7F000009) {
    Arrival arrival;
    arrival.datagram = std::move(datagram);
    arrival.after_ms = after_ms;
    arrival.sender = htonl(sender);
    arrival.interface = 1;
    return arrival;
}

/// Answers the first request of a command as told; one goes out per adapter.
struct Answering {
    using Script = std::function<std::vector<Arrival>(const Bytes &request)>;

    explicit Answering(Script given) : script(std::move(given)) {}
    std::uint64_t elapsed_ms() const { return network.now_ms() - start_ms; }

    Script script;
    std::vector<Bytes> requests;
    ScriptedNetwork network{[this](const Bytes &request) {
        requests.push_back(request);
        if (requests.size() == 1)
            for (Arrival &answer : script(request))
                network.queue(std::move(answer));
        return 0;
    }};
    std::uint64_t start_ms = network.now_ms();
};

std::vector<Arrival> nothing(const Bytes &) { return {}; }

TEST(Broadcast, WaitsAsLongAsItMust) {
    const auto flood = [](const Bytes &) {
        std::vector<Arrival> arrivals;
        for (std::uint32_t i = 0; i < 3000; ++i)
            arrivals.push_back(arrival({'x'}, 10 * i));
        return arrivals;
    };
    const auto acknowledged = [](std::uint16_t status) {
        return [status](const Bytes &request) {
            const auto code = static_cast<std::uint16_t>((request[2] << 8 | request[3]) + 1);
            return std::vector{arrival(acknowledge(request, status, code, {}), 100)};
        };
    };
    const struct {
        std::function<GXSTATUS()> call;
        Answering::Script script;
        GXSTATUS status;
        std::uint64_t least_ms, most_ms;
        const char *trace;
    } cases[] = {
        {[] { return find(0); }, nothing, 0, 250, 250, "No responses - collection timed out"},
        {[] { return find(0); }, flood, 0, 5250, 5260, "Datagrams arrive without end. Collection aborted."},
        // Three sends, each with its pause of 10 ms.
        {[] { return force("10.0.0.50"); }, nothing, 0xE1000007, 3030, 3030,
         "Failed to collect force IP responses. Status 0xe1000007"},
        {[] { return force("10.0.0.50"); }, acknowledged(0x8006), 0xE1000007, 3100, 3100,
         "Interface 0 OnReady() returned 0xe1018006."}, // refused, not unanswered, and the wait goes on
        {[] { return force("10.0.0.50"); }, acknowledged(0), 0, 100, 100, "Local IP address 127.0.0.1 found"},
        {[] { return force("0.0.0.0"); }, nothing, 0, 30, 30, "Local IP address 127.0.0.1 found"},
        {[] { return configure(false); }, nothing, 0xE1000007, 400, 400, "No responses - collection timed out"},
        {[] { return configure(false); }, acknowledged(0x8001), 0xE1000007, 500, 500,
         "Camera command Set IP Configuration not implemented"},
        {[] { return configure(false); }, acknowledged(0x8FFF), 0xE1000013, 100, 100,
         "Interface 0 OnReady() returned 0xe1000013."},
    };
    for (const auto &row : cases) {
        TraceLog traces;
        Answering answering(row.script);
        EXPECT_EQ(row.call(), row.status) << row.trace;
        EXPECT_GE(answering.elapsed_ms(), row.least_ms) << row.trace;
        EXPECT_LE(answering.elapsed_ms(), row.most_ms) << row.trace;
        EXPECT_TRUE(traces.contains(row.trace)) << traces.all();
        EXPECT_EQ(answering.requests.size(), 3u);
    }
}

TEST(Broadcast, AForeignPortOnOneAdapterDoesNotCostTheAdapter) {
    for (const auto &[taken, senders] : {std::pair{1, 3u}, {3, 3u}, {1000, 1u}}) {
        for (const std::uint32_t flags : {Enumerator::FlagDefault, Enumerator::FlagBroadcastAcknowledge}) {
            Answering answering(nothing);
            answering.network.portsTaken = taken;
            const bool onlyListens = taken == 1000 && flags != 0;
            EXPECT_EQ(find(flags), onlyListens ? 0xE1020000u | EADDRINUSE : 0u);
            EXPECT_EQ(answering.requests.size(), onlyListens ? 0u : senders) << taken;
        }
    }
}

TEST(Broadcast, OnlyIPv4) {
    const SocketAddress v6("10.0.0.50", 0, AF_INET6);
    const SocketAddress v4("10.0.0.50");
    for (int bad = 0; bad < 3; ++bad) {
        const auto at = [&](int i) -> const sockaddr * { return i == bad ? v6 : v4; };
        Answering answering(nothing);
        TraceLog traces;
        EXPECT_EQ(Gx::ForceIp(Mac, at(0), at(1), at(2), 0), 0xE1000009u) << bad;
        EXPECT_EQ(Gx::SetIpConfiguration(Mac, {}, at(0), at(1), at(2), nullptr, true, 10), 0xE1000009u) << bad;
        EXPECT_EQ(traces.contains("Only IPv4 addressing supported.\n"), bad == 0);
        EXPECT_TRUE(answering.requests.empty());
    }
    EXPECT_EQ(Gx::ForceIp(nullptr, v4, v4, v4, 0), 0xE1000006u);
}

TEST(Acknowledges, FromOutsideTheSubnetCountOnlyWhenSentByBroadcastIsAllowed) {
    for (const bool broadcastAck : {false, true}) {
        const auto fromOutside = [](const Bytes &request) {
            const auto code = static_cast<std::uint16_t>((request[2] << 8 | request[3]) + 1);
            const Bytes payload(code == TAG_DISCOVERY_ACK ? 248 : 0);
            Arrival outside = arrival(acknowledge(request, 0, code, payload), 0, 0x0A000009);
            outside.destination = htonl(0x7F000001);
            outside.row = request[1] == 0x01 ? 0 : 1; // behind the dedicated receiver
            return std::vector{outside};
        };
        TraceLog traces;
        FoundList found;
        {
            Answering answering(fromOutside);
            EXPECT_EQ(Enumerator::Discover(&found, Timeout_ms, broadcastAck, nullptr), 0u);
        }
        EXPECT_EQ(found.list.size(), broadcastAck ? 1u : 0u);
        EXPECT_EQ(traces.contains("\t==>dropped"), !broadcastAck) << traces.all();
        TraceLog configuring;
        Answering answering(fromOutside);
        EXPECT_EQ(configure(broadcastAck), broadcastAck ? 0u : 0xE1000007u);
        EXPECT_EQ(configuring.contains("\t==>dropped"), !broadcastAck) << configuring.all();
        EXPECT_EQ(answering.requests.at(0)[1], broadcastAck ? 0x11 : 0x01);
    }
}

TEST(Acknowledges, MalformedOnesAreIgnored) {
    const auto malformed = [](const Bytes &request) {
        const auto code = static_cast<std::uint16_t>((request[2] << 8 | request[3]) + 1);
        const Bytes payload(code == TAG_DISCOVERY_ACK ? 248 : 0);
        Bytes cut = acknowledge(request, 0, code, payload);
        cut.pop_back();
        const std::uint16_t status = code == TAG_DISCOVERY_ACK ? 0x8003 : 0; // of no interest there, as the id is
        return std::vector{arrival({}), arrival(cut), arrival(acknowledge(request, 0, 0x7FFF, payload)),
                           arrival(acknowledge(request, status, code, payload, 1))};
    };
    const struct {
        std::function<std::size_t()> call;
        std::size_t result;
        std::vector<const char *> traces;
    } cases[] = {
        {[] { return discover(0).size(); },
         1,
         {"Invalid discover response size received 255", "Unexpected response during device discovering 0x7fff"}},
        {[] { return force("10.0.0.50"); },
         0,
         {"Invalid force IP response size received 7", "Interface 0 OnReady() returned 0xe100000c.",
          "Unexpected response on force IP 0x7fff", "Interface 0 OnReady() returned 0xe100000b."}},
        {[] { return configure(false); },
         0,
         {"Invalid set IP configuration response size received 7",
          "Unexpected response during set IP configuration 0x7fff"}},
    };
    for (const auto &row : cases) {
        TraceLog traces;
        Answering answering(malformed);
        EXPECT_EQ(row.call(), row.result);
        EXPECT_TRUE(traces.contains("Interface 0 OnReady() returned 0xe1000013.")) << traces.all(); // empty
        for (const char *trace : row.traces)
            EXPECT_TRUE(traces.contains(trace)) << trace << "\n" << traces.all();
    }
}

} // namespace
