#include "support/TraceLog.h"

#include "gxapi/Trace.h"

TraceLog::TraceLog() { Gx::Trace::SetSink(&TraceLog::sink, this, Gx::Trace::FlagAll, Gx::Trace::LevelMostVerbose); }

TraceLog::~TraceLog() { Gx::Trace::SetSink(nullptr, nullptr, 0, 0); }

bool TraceLog::contains(const std::string &text) const { return all().find("\n" + text + "\n") != std::string::npos; }

std::string TraceLog::all() const {
    std::lock_guard<std::mutex> lock(m_Mutex);
    return m_Lines;
}

void TraceLog::sink(void *self, std::uint32_t, std::uint32_t, const char *text) {
    auto *log = static_cast<TraceLog *>(self);
    std::lock_guard<std::mutex> lock(log->m_Mutex);
    log->m_Lines += std::string(text) + "\n";
}
