#include "HolderProcess.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace commissioning {

namespace {

namespace fs = std::filesystem;

std::string textOf(const fs::path &path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool hasSocket(const fs::path &process, const std::string &link) {
    std::error_code error;
    for (const fs::directory_entry &entry : fs::directory_iterator(process / "fd", error)) {
        std::error_code gone;
        if (fs::read_symlink(entry.path(), gone) == link)
            return true;
    }
    return false;
}

} // namespace

std::string processName(int id) {
    std::string name = textOf(fs::path("/proc") / std::to_string(id) / "comm");
    name.erase(name.find_last_not_of('\n') + 1);
    std::replace_if(
        name.begin(), name.end(), [](unsigned char byte) { return std::iscntrl(byte) != 0; }, '?');
    return name;
}

std::string inodeOf(Address address, std::uint16_t port, const std::string &table) {
    std::istringstream lines(table);
    std::string line;
    std::string found;
    while (std::getline(lines, line)) {
        unsigned local = 0; // in network order, printed as this machine's number
        unsigned localPort = 0;
        unsigned long inode = 0;
        if (std::sscanf(line.c_str(), " %*d: %8x:%4x %*s %*s %*s %*s %*s %*s %*s %lu", &local, &localPort, &inode) != 3)
            continue;
        if (localPort != port || (local != 0 && ntohl(local) != address))
            continue;
        if (local != 0 || found.empty())
            found = std::to_string(inode);
        if (local != 0)
            break;
    }
    return found;
}

std::optional<Process> processOf(Address address, std::uint16_t port) {
    const std::string inode = inodeOf(address, port, textOf("/proc/net/udp"));
    if (inode.empty())
        return std::nullopt;
    const std::string link = "socket:[" + inode + "]";
    std::error_code error;
    for (const fs::directory_entry &entry : fs::directory_iterator("/proc", error)) {
        const std::string name = entry.path().filename();
        if (name.find_first_not_of("0123456789") == std::string::npos && hasSocket(entry.path(), link))
            return Process{std::stoi(name), processName(std::stoi(name))};
    }
    return std::nullopt;
}

} // namespace commissioning
