#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace listener {

/// A packet socket on one adapter that takes in what comes from the port of cameras.
struct Socket {
    std::string adapter;
    int descriptor = -1;
};

/// Opens one. \return its descriptor, or -1 with errno set.
int openOn(const std::string &adapter);

/// How many datagrams the kernel had to drop since the last call, because they were not read in time.
std::uint64_t takeDropCount(const Socket &socket);

} // namespace listener
