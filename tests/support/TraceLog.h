#pragma once

#include <cstdint>
#include <mutex>
#include <string>

/// Gathers the protocol library's traces as long as it lives.
class TraceLog {
public:
    TraceLog();
    ~TraceLog();
    TraceLog(const TraceLog &) = delete;
    TraceLog &operator=(const TraceLog &) = delete;

    bool contains(const std::string &text) const;
    std::string all() const; ///< each line with its end

private:
    static void sink(void *self, std::uint32_t flag, std::uint32_t level, const char *text);

    mutable std::mutex m_Mutex;
    std::string m_Lines = "\n";
};
