#include "Netlink.h"

#include <cerrno>
#include <sys/socket.h>
#include <system_error>

namespace commissioning {

namespace {

[[noreturn]] void fail(const char *what, int error = errno) {
    throw std::system_error(error, std::generic_category(), what);
}

int callHandler(const nlmsghdr *message, void *handler) {
    (*static_cast<const Netlink::Handler *>(handler))(*message);
    return MNL_CB_OK;
}

} // namespace

Netlink::Netlink() : m_Socket(mnl_socket_open2(NETLINK_ROUTE, SOCK_CLOEXEC)), m_Buffer(65536) {
    if (!m_Socket || mnl_socket_bind(m_Socket.get(), 0, MNL_SOCKET_AUTOPID) < 0)
        fail("cannot open a netlink socket");
    const timeval patience{2, 0};
    (void)setsockopt(mnl_socket_get_fd(m_Socket.get()), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
}

bool Netlink::dump(std::uint16_t type, const Handler &handler) {
    alignas(nlmsghdr) char bytes[MNL_ALIGN(sizeof(nlmsghdr)) + MNL_ALIGN(sizeof(rtgenmsg))];
    nlmsghdr &message = *mnl_nlmsg_put_header(bytes);
    message.nlmsg_type = type;
    message.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    static_cast<rtgenmsg *>(mnl_nlmsg_put_extra_header(&message, sizeof(rtgenmsg)))->rtgen_family =
        type == RTM_GETLINK ? AF_UNSPEC : AF_INET;
    const int error = exchange(message, handler);
    if (error != 0 && error != EINTR)
        fail("the kernel does not tell of its network", error);
    return error == 0;
}

int Netlink::request(nlmsghdr &message, const Handler &handler) {
    message.nlmsg_flags = NLM_F_REQUEST | NLM_F_ACK;
    return exchange(message, handler);
}

int Netlink::exchange(nlmsghdr &message, const Handler &handler) {
    message.nlmsg_seq = ++m_Sequence;
    if (mnl_socket_sendto(m_Socket.get(), &message, message.nlmsg_len) < 0)
        fail("cannot ask the kernel");
    Handler copy = handler; // libmnl passes a pointer that is not const
    for (;;) {
        const ssize_t size = mnl_socket_recvfrom(m_Socket.get(), m_Buffer.data(), m_Buffer.size());
        if (size < 0)
            fail("no answer of the kernel");
        const int result = mnl_cb_run(m_Buffer.data(), static_cast<std::size_t>(size), m_Sequence,
                                      mnl_socket_get_portid(m_Socket.get()), callHandler, &copy);
        if (result == MNL_CB_STOP)
            return 0;
        if (result < 0 && errno != ESRCH && errno != EPROTO) // the rest of an exchange that was given up
            return errno;
    }
}

} // namespace commissioning
