#include "support/Leaks.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>
#include <unistd.h>

namespace {

std::size_t countEntries(const char *folder) {
    const std::filesystem::directory_iterator begin(folder);
    return static_cast<std::size_t>(std::distance(begin, std::filesystem::directory_iterator()));
}

} // namespace

Holdings Holdings::now() { return {countEntries("/proc/self/fd"), countEntries("/proc/self/task")}; }

long residentMemory_KiB() {
    long total = 0, resident = 0; // pages
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * sysconf(_SC_PAGESIZE) / 1024;
}

bool eventually(const std::function<bool()> &condition, int timeout_ms) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
    while (std::chrono::steady_clock::now() < deadline) {
        if (condition())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return condition();
}
