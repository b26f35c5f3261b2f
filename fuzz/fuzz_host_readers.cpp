// What programs and files of the host tell; the first byte chooses the reader: messages of rtnetlink, the kernel's
// counters (two files with a zero between them), a ruleset of nftables, the lines of lanvane-listen (in pieces as long
// as the second byte says), NetworkManager's connections. fuzz_host_readers -max_len=8192 -timeout=5 CORPUS
// seeds/fuzz_host_readers

#include "FuzzInput.h"

#include "NetlinkReader.h"
#include "NetworkManager.h"
#include "Ruleset.h"
#include "commissioning/Counters.h"
#include "commissioning/ListenerClient.h"

#include <cstring>
#include <linux/netlink.h>

using namespace commissioning;

namespace {

void readMessage(const nlmsghdr &message) {
    if (const auto link = readLink(message))
        Require(link->adapter.mac.empty() || link->adapter.mac.size() == 12, "a MAC that is none");
    readAddress(message);
    readRoutes(message);
    readNeighbour(message);
}

/// What is said in a message may be anything, but the kernel cuts its datagrams into messages as it should.
void readMessages(FuzzInput input) {
    while (!input.IsEmpty()) {
        const Bytes start = input.Take(sizeof(std::uint32_t));
        std::uint32_t size = 0;
        std::memcpy(&size, start.data(), start.size());
        Bytes bytes = input.Take(std::max<std::size_t>(NLMSG_ALIGN(size & 0xFFFF), sizeof(nlmsghdr)) - sizeof size);
        bytes.insert(bytes.begin(), start.begin(), start.end());
        if (bytes.size() < sizeof(nlmsghdr))
            return;
        const auto clipped = static_cast<std::uint32_t>(std::min<std::size_t>(size & 0xFFFF, bytes.size()));
        std::memcpy(bytes.data(), &clipped, sizeof clipped);
        readMessage(*reinterpret_cast<const nlmsghdr *>(bytes.data()));
    }
}

void readLines(FuzzInput input) {
    const std::size_t piece = input.Byte() + std::size_t{1};
    ListenerLines lines;
    while (!input.IsEmpty()) {
        const Bytes bytes = input.Take(piece);
        lines.add({reinterpret_cast<const char *>(bytes.data()), bytes.size()});
    }
    for (const Camera &camera : hiddenCameras(lines.report(), {}, std::chrono::steady_clock::time_point::max()))
        Require(camera.mac.size() == 12 && !camera.adapters.empty(), "a hidden camera without its adapter");
}

std::string restOf(FuzzInput &input) {
    const Bytes bytes = input.Rest();
    return {bytes.begin(), bytes.end()};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzInput input(data, size);
    switch (input.Byte() % 5) {
    case 0:
        readMessages(input);
        break;
    case 1: {
        const std::string snmp = input.Text();
        const std::string others = restOf(input);
        const Counters counters = parseCounters(snmp, others, others);
        const Counters same = counters;
        Require((counters - same).unexplained() == 0, "counters that differ from themselves");
        break;
    }
    case 2:
        if (const auto firewall = judgeRuleset(restOf(input), {"nic0"}))
            Require(firewall->mayDrop || !firewall->drops, "a ruleset that drops and cannot");
        break;
    case 3:
        readLines(input);
        break;
    default:
        parseManagedConnections(restOf(input));
    }
    return 0;
}
