#include "Sockets.h"

#include "gxapi/GvcpMessages.h"

#include <cerrno>
#include <linux/filter.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace listener {

namespace {

/// For packets that begin with their IP header: acknowledges to a discovery, which are unfragmented UDP datagrams from
/// port 3956. A jump counts the instructions it leaves out.
constexpr sock_filter program[] = {
    {BPF_LD | BPF_B | BPF_ABS, 0, 0, 0},
    {BPF_ALU | BPF_AND | BPF_K, 0, 0, 0xF0},
    {BPF_JMP | BPF_JEQ | BPF_K, 0, 9, 0x40}, // IPv4
    {BPF_LD | BPF_B | BPF_ABS, 0, 0, 9},
    {BPF_JMP | BPF_JEQ | BPF_K, 0, 7, IPPROTO_UDP},
    {BPF_LD | BPF_H | BPF_ABS, 0, 0, 6},
    {BPF_JMP | BPF_JSET | BPF_K, 5, 0, 0x3FFF}, // more fragments, or not the first
    {BPF_LDX | BPF_B | BPF_MSH, 0, 0, 0},       // length of the IP header
    {BPF_LD | BPF_H | BPF_IND, 0, 0, 0},
    {BPF_JMP | BPF_JEQ | BPF_K, 0, 2, GVCP_PORT},
    {BPF_LD | BPF_H | BPF_IND, 0, 0, 10}, // behind the UDP header: status, code
    {BPF_JMP | BPF_JEQ | BPF_K, 1, 0, TAG_DISCOVERY_ACK},
    {BPF_RET | BPF_K, 0, 0, 0},
    {BPF_RET | BPF_K, 0, 0, 0xFFFF},
};

bool prepare(int descriptor, const std::string &adapter) {
    const sock_fprog filter{sizeof program / sizeof *program, const_cast<sock_filter *>(program)};
    const int on = 1;
    const int size = 1 << 20; // as far as the host allows
    (void)setsockopt(descriptor, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
    sockaddr_ll where{};
    where.sll_family = AF_PACKET;
    where.sll_protocol = htons(ETH_P_IP);
    where.sll_ifindex = static_cast<int>(if_nametoindex(adapter.c_str()));
    // An index of 0 would mean all adapters.
    return where.sll_ifindex != 0 &&
           setsockopt(descriptor, SOL_SOCKET, SO_ATTACH_FILTER, &filter, sizeof filter) == 0 &&
           setsockopt(descriptor, SOL_PACKET, PACKET_IGNORE_OUTGOING, &on, sizeof on) == 0 &&
           bind(descriptor, reinterpret_cast<const sockaddr *>(&where), sizeof where) == 0;
}

} // namespace

int openOn(const std::string &adapter) {
    // Without a protocol it takes nothing in until it is bound, by when it has its filter.
    const int descriptor = socket(AF_PACKET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor < 0 || prepare(descriptor, adapter))
        return descriptor;
    const int error = errno;
    close(descriptor);
    errno = error;
    return -1;
}

std::uint64_t takeDropCount(const Socket &socket) {
    tpacket_stats statistics{};
    socklen_t size = sizeof statistics;
    const bool isKnown = getsockopt(socket.descriptor, SOL_PACKET, PACKET_STATISTICS, &statistics, &size) == 0;
    return isKnown ? statistics.tp_drops : 0;
}

} // namespace listener
