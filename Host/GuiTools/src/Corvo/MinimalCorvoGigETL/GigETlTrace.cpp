#include "MinimalCorvoGigETL/GigETlTrace.h"

#include "Log/CLog.h"
#include "gxapi/Trace.h"

#include <atomic>
#include <chrono>
#include <cstring>
#include <exception>
#include <mutex>
#include <optional>

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

/// A device that provokes warnings shall not push all else out of the log, not even while it is being configured.
bool IsWithinRate() {
    constexpr unsigned int linesPerSecond = 100;
    using Clock = std::chrono::steady_clock;
    static std::mutex lock;
    static auto &budget = *new std::optional<tracelog::LineBudget>; // never freed: threads trace until the very end
    static Clock::time_point end;
    const std::lock_guard<std::mutex> guard(lock);
    if (const Clock::time_point now = Clock::now(); !budget || now >= end) {
        budget.emplace(GxTraceCategory(), linesPerSecond); // ends the one before, which tells what was left out
        end = now + std::chrono::seconds(1);
    }
    return budget->Take();
}

/// Runs on any thread of the protocol library, and must not throw.
void GxTraceSink(void * /*context*/, std::uint32_t /*flag*/, std::uint32_t level, const char *text) {
    std::size_t length = std::strlen(text);
    if (length > 0 && text[length - 1] == '\n')
        --length;
    try {
        if (level <= Gx::Trace::LevelWarning && !IsWithinRate())
            return;
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
