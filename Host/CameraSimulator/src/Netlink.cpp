#include "Netlink.h"

#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace camsim {
namespace {

constexpr std::size_t messagesPerBatch = 64; // the answers to a batch must fit into the socket's receive buffer

[[noreturn]] void failRequest(const std::string &what, int error = errno) {
    throw std::system_error(error, std::generic_category(), what);
}

int errorOf(const nlmsghdr &header) { return -reinterpret_cast<const nlmsgerr *>(payloadOf(header))->error; }

} // namespace

NetlinkMessage::NetlinkMessage(std::uint16_t type, std::uint16_t flags, const void *body, std::size_t size) {
    nlmsghdr header{};
    header.nlmsg_type = type;
    header.nlmsg_flags = static_cast<std::uint16_t>(NLM_F_REQUEST | flags);
    append(&header, sizeof header);
    append(body, size);
}

void NetlinkMessage::append(const void *data, std::size_t size) {
    const auto *bytes = static_cast<const std::uint8_t *>(data);
    bytes_.insert(bytes_.end(), bytes, bytes + size);
    bytes_.resize((bytes_.size() + 3) / 4 * 4);
}

void NetlinkMessage::attribute(std::uint16_t type, const void *data, std::size_t size) {
    const rtattr header{static_cast<std::uint16_t>(RTA_LENGTH(size)), type};
    append(&header, sizeof header);
    append(data, size);
}

void NetlinkMessage::attribute32(std::uint16_t type, std::uint32_t value) { attribute(type, &value, sizeof value); }

std::size_t NetlinkMessage::begin(std::uint16_t type) {
    const std::size_t begun = bytes_.size();
    attribute(static_cast<std::uint16_t>(type | NLA_F_NESTED), nullptr, 0);
    return begun;
}

void NetlinkMessage::end(std::size_t begun) {
    const auto length = static_cast<std::uint16_t>(bytes_.size() - begun);
    std::memcpy(&bytes_[begun], &length, sizeof length);
}

const std::vector<std::uint8_t> &NetlinkMessage::finish(std::uint32_t sequence) {
    nlmsghdr header{};
    std::memcpy(&header, bytes_.data(), sizeof header);
    header.nlmsg_len = static_cast<std::uint32_t>(bytes_.size());
    header.nlmsg_seq = sequence;
    std::memcpy(bytes_.data(), &header, sizeof header);
    return bytes_;
}

Netlink::Netlink() : socket_(socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE)) {
    if (!socket_)
        failRequest("cannot open a netlink socket");
    const int on = 1; // answers without a copy of the request
    (void)setsockopt(socket_.get(), SOL_NETLINK, NETLINK_CAP_ACK, &on, sizeof on);
    const timeval patience{5, 0};
    (void)setsockopt(socket_.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
}

void Netlink::send(const std::vector<std::uint8_t> &bytes) {
    sockaddr_nl kernel{};
    kernel.nl_family = AF_NETLINK;
    if (sendto(socket_.get(), bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr *>(&kernel), sizeof kernel) < 0)
        failRequest("cannot send a netlink request");
}

std::size_t Netlink::receive(std::vector<std::uint8_t> &buffer) {
    buffer.resize(32768);
    const ssize_t size = recv(socket_.get(), buffer.data(), buffer.size(), 0);
    if (size < 0)
        failRequest("no answer to a netlink request");
    return static_cast<std::size_t>(size);
}

std::vector<int> Netlink::execute(std::vector<NetlinkMessage> &messages) {
    std::vector<int> results(messages.size());
    std::vector<std::uint8_t> buffer;
    for (std::size_t start = 0; start < messages.size(); start += messagesPerBatch) {
        const std::size_t count = std::min(messagesPerBatch, messages.size() - start);
        const std::uint32_t firstSequence = sequence_ + 1;
        std::vector<std::uint8_t> batch;
        for (std::size_t i = 0; i < count; ++i) {
            const auto &bytes = messages[start + i].finish(++sequence_);
            batch.insert(batch.end(), bytes.begin(), bytes.end());
        }
        send(batch);
        std::size_t answered = 0;
        while (answered < count) {
            auto left = static_cast<unsigned>(receive(buffer));
            for (auto *header = reinterpret_cast<nlmsghdr *>(buffer.data()); NLMSG_OK(header, left);
                 header = NLMSG_NEXT(header, left)) {
                const std::uint32_t index = header->nlmsg_seq - firstSequence;
                if (header->nlmsg_type != NLMSG_ERROR || index >= count)
                    continue;
                results[start + index] = errorOf(*header);
                ++answered;
            }
        }
    }
    return results;
}

void Netlink::query(NetlinkMessage message, const std::string &what,
                    const std::function<void(const nlmsghdr &)> &visit) {
    send(message.finish(++sequence_));
    std::vector<std::uint8_t> buffer;
    auto left = static_cast<unsigned>(receive(buffer));
    const auto *header = reinterpret_cast<nlmsghdr *>(buffer.data());
    if (!NLMSG_OK(header, left) || header->nlmsg_seq != sequence_)
        failRequest(what, EPROTO);
    if (header->nlmsg_type == NLMSG_ERROR)
        failRequest(what, errorOf(*header));
    visit(*header);
}

} // namespace camsim
