#pragma once

#include "FileDescriptor.h"
#include "camsim/Camera.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace camsim {

/// A datagram for GvcpSocket::send().
struct OutgoingDatagram {
    Reply reply;
    std::uint32_t mark = 0; ///< routing mark, 0 for none
};

/// The UDP socket of all cameras of one interface: hears broadcasts and every address of the interface, and sends from
/// whichever camera's address is wanted, always through that interface.
class GvcpSocket {
public:
    struct Settings {
        std::string interface;
        bool bindToInterface = false; ///< hear nothing else; otherwise datagrams of other interfaces are dropped
        std::uint16_t port = 0;       ///< 0 lets the kernel choose
    };

    /// Made in the network namespace of the calling thread. Throws std::system_error or std::runtime_error.
    explicit GvcpSocket(const Settings &settings);

    int fd() const { return socket_.get(); }
    std::uint16_t port() const { return port_; }

    /// Reads up to a batch of datagrams without waiting; `visit` gets each. Returns the number read.
    std::size_t receive(const std::function<void(const Request &)> &visit);
    /// Hands datagrams to the kernel in order. Returns how many it refused.
    std::size_t send(const std::vector<OutgoingDatagram> &datagrams);

private:
    void setOption(int level, int option, int value, const char *what);
    void enlargeBuffers();
    void bindTo(std::uint16_t port, const std::string &interface);
    bool waitWritable() const;

    FileDescriptor socket_;
    unsigned interface_ = 0;
    std::uint16_t port_ = 0;
    std::vector<std::uint8_t> buffer_;
};

} // namespace camsim
