#pragma once

#include "gxapi/Trace.h"

#include <mutex>
#include <string>

/// Gathers the protocol library's traces as long as it lives.
class TraceLog {
public:
    TraceLog() { Gx::Trace::SetSink(&TraceLog::sink, this, Gx::Trace::FlagAll, Gx::Trace::LevelMostVerbose); }
    ~TraceLog() { Gx::Trace::SetSink(nullptr, nullptr, 0, 0); }
    TraceLog(const TraceLog &) = delete;
    TraceLog &operator=(const TraceLog &) = delete;

    bool contains(const std::string &line) const { return all().find("\n" + line + "\n") != std::string::npos; }
    /// Each line with its end.
    std::string all() const {
        const std::lock_guard lock(m_Mutex);
        return m_Lines;
    }

private:
    static void sink(void *self, std::uint32_t, std::uint32_t, const char *text) {
        auto *log = static_cast<TraceLog *>(self);
        const std::lock_guard lock(log->m_Mutex);
        log->m_Lines += std::string(text) + "\n";
    }

    mutable std::mutex m_Mutex;
    std::string m_Lines = "\n";
};
