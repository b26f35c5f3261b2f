#include "MinimalCorvoGigETL/GigETlTrace.h"

#include "Log/CLog.h"
#include "gxapi/Trace.h"

#include <atomic>
#include <cstring>
#include <exception>

namespace Corvo {

namespace {

constexpr char GX_CATEGORY[] = "Corvo.GigE.Gx";

/// Looked up until that succeeds: the sink may outlast a time in which logging is switched off.
unsigned long GxTraceCategory() {
    static std::atomic<unsigned long> category{tracelog::INVALID_CATEGORY};
    unsigned long id = category.load(std::memory_order_relaxed);
    if (id == tracelog::INVALID_CATEGORY) {
        id = tracelog::LogGetCatID(GX_CATEGORY);
        category.store(id, std::memory_order_relaxed);
    }
    return id;
}

tracelog::LogLevel LogLevelOf(std::uint32_t gxLevel) {
    if (gxLevel <= Gx::Trace::LevelError)
        return tracelog::lvError;
    return gxLevel == Gx::Trace::LevelWarning ? tracelog::lvWarning : tracelog::lvDebug;
}

/// Runs on any thread of the protocol library, and must not throw.
void GxTraceSink(void * /*context*/, std::uint32_t /*flag*/, std::uint32_t level, const char *text) {
    std::size_t length = std::strlen(text);
    if (length > 0 && text[length - 1] == '\n')
        --length;
    try {
        tracelog::LogTrace(GxTraceCategory(), LogLevelOf(level), "%.*s", static_cast<int>(length), text);
    } catch (const std::exception &) {
        // The line is lost, the operation that it is about goes on.
    }
}

} // namespace

unsigned long GigETlTraceCategory() {
    static const unsigned long category = tracelog::LogGetCatID("Corvo.GigE.TL");
    return category;
}

void RouteGxTraces() {
    const bool verbose = GenICam::CLog::GetLogger(GX_CATEGORY)->IsEnabled(GenICam::LogPriority_Debug);
    Gx::Trace::SetSink(&GxTraceSink, nullptr, Gx::Trace::FlagAll,
                       verbose ? Gx::Trace::LevelMostVerbose : Gx::Trace::LevelWarning);
}

} // namespace Corvo
