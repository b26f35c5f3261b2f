#pragma once

#include "FileDescriptor.h"

#include <linux/netlink.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace camsim {

/// One rtnetlink request under construction.
class NetlinkMessage {
public:
    /// `body` is the fixed part that follows the header, for instance an ifaddrmsg.
    NetlinkMessage(std::uint16_t type, std::uint16_t flags, const void *body, std::size_t size);

    void attribute(std::uint16_t type, const void *data, std::size_t size);
    void attribute32(std::uint16_t type, std::uint32_t value); ///< in the byte order of `value`
    /// Attributes added until the matching end() are nested in this one.
    std::size_t begin(std::uint16_t type);
    void end(std::size_t begun);

    const std::vector<std::uint8_t> &finish(std::uint32_t sequence);

private:
    void append(const void *data, std::size_t size);

    std::vector<std::uint8_t> bytes_;
};

/// What follows a netlink header; NLMSG_DATA without its old-style cast.
inline const std::uint8_t *payloadOf(const nlmsghdr &header) {
    return reinterpret_cast<const std::uint8_t *>(&header) + NLMSG_HDRLEN;
}

/// A route netlink socket in the network namespace of the thread that makes it.
class Netlink {
public:
    Netlink(); ///< Throws std::system_error.

    /// Sends all requests, many in one datagram, and returns for each its error number, 0 for success.
    /// Throws std::system_error when the exchange itself fails.
    std::vector<int> execute(std::vector<NetlinkMessage> &messages);
    /// Sends one request and hands the first answer that is no error to `visit`.
    /// Throws std::system_error for an error answer, with `what` in the text.
    void query(NetlinkMessage message, const std::string &what, const std::function<void(const nlmsghdr &)> &visit);

private:
    void send(const std::vector<std::uint8_t> &bytes);
    std::size_t receive(std::vector<std::uint8_t> &buffer);

    FileDescriptor socket_;
    std::uint32_t sequence_ = 0;
};

} // namespace camsim
