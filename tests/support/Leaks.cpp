#include "support/Leaks.h"

#include <chrono>
#include <filesystem>
#include <thread>

namespace {

std::size_t countEntries(const char *folder) {
    const std::filesystem::directory_iterator begin(folder);
    return static_cast<std::size_t>(std::distance(begin, std::filesystem::directory_iterator()));
}

} // namespace

Holdings Holdings::now() { return {countEntries("/proc/self/fd"), countEntries("/proc/self/task")}; }

bool eventually(const std::function<bool()> &condition, int timeout_ms) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
    while (std::chrono::steady_clock::now() < deadline) {
        if (condition())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return condition();
}
