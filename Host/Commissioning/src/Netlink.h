#pragma once

#include <cstdint>
#include <functional>
#include <libmnl/libmnl.h>
#include <linux/rtnetlink.h>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace commissioning {

/// A connection to the kernel's rtnetlink. Not thread-safe.
class Netlink {
public:
    using Handler = std::function<void(const nlmsghdr &)>;

    /// \throws std::system_error
    Netlink();

    /// Asks for a whole table. \param type RTM_GET... \param read makes an entry of a message, or none of one that is
    /// of no interest. \throws std::system_error
    template <class Entry>
    std::vector<Entry> table(std::uint16_t type, std::optional<Entry> (*read)(const nlmsghdr &)) {
        std::vector<Entry> entries;
        const auto add = [&](const nlmsghdr &message) {
            if (std::optional<Entry> entry = read(message))
                entries.push_back(std::move(*entry));
        };
        // A table that changes while it is read is read anew; one that never rests is taken as it is.
        for (int reading = 0; reading < 5; ++reading) {
            entries.clear();
            if (dump(type, add))
                break;
        }
        return entries;
    }
    /// Sends one request, to which the caller has added body and attributes, and waits for its acknowledge.
    /// \return 0 or the errno of the kernel's refusal. \throws std::system_error when the kernel cannot be asked.
    int request(nlmsghdr &message, const Handler &handler);

private:
    /// \return whether the table stood still meanwhile.
    bool dump(std::uint16_t type, const Handler &handler);
    int exchange(nlmsghdr &message, const Handler &handler);

    struct Close {
        void operator()(mnl_socket *socket) const { mnl_socket_close(socket); }
    };
    std::unique_ptr<mnl_socket, Close> m_Socket;
    std::vector<char> m_Buffer;
    unsigned m_Sequence = 0;
};

} // namespace commissioning
