#include "support/TraceLog.h"

#include "gxapi/Trace.h"

#include <algorithm>

TraceLog::TraceLog() { Gx::Trace::SetSink(&TraceLog::sink, this, Gx::Trace::FlagAll, Gx::Trace::LevelMostVerbose); }

TraceLog::~TraceLog() { Gx::Trace::SetSink(nullptr, nullptr, 0, 0); }

bool TraceLog::contains(const std::string &text) const {
    std::lock_guard<std::mutex> lock(m_Mutex);
    return std::find(m_Lines.begin(), m_Lines.end(), text) != m_Lines.end();
}

std::string TraceLog::all() const {
    std::lock_guard<std::mutex> lock(m_Mutex);
    std::string text;
    for (const std::string &line : m_Lines)
        text += line + "\n";
    return text;
}

void TraceLog::sink(void *self, std::uint32_t, std::uint32_t, const char *text) {
    auto *log = static_cast<TraceLog *>(self);
    std::lock_guard<std::mutex> lock(log->m_Mutex);
    log->m_Lines.emplace_back(text);
}
