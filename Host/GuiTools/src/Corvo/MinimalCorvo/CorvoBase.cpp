#include "MinimalCorvo/CorvoBase.h"

#include "Log/CLog.h"
#include "MinimalCorvo/TraceLog.h"

#include <atomic>
#include <cassert>
#include <exception>
#include <mutex>

namespace Corvo {

namespace {

constexpr unsigned int VERSION[] = {5, 0, 11, 4711};
constexpr char VERSION_STRING[] = "5.0.11.4711";

std::mutex initMutex;
/// Terminating reads and lowers it without initMutex: callers terminate from one thread.
std::atomic<std::int32_t> initCount{0};
bool loggingInitialized = false;
void (*terminationHandler)() noexcept = nullptr;

std::mutex globalsLock;
std::int64_t internalFlags = 0;

unsigned long BaseCategory() {
    static const unsigned long category = tracelog::LogGetCatID("corvo.base");
    return category;
}

void InitializeLogging() {
    if (loggingInitialized || IsInternalFlagSet(InternalFlag_HostManagesLogging))
        return;
    try {
        GenICam::CLog::Initialize();
    } catch (const std::exception &) {
        tracelog::LogTrace(BaseCategory(), tracelog::lvCritical,
                           "Exception during initialisation in CorvoInitailize()!");
        assert(false && "Exception during initialisation in CorvoInitailize()!");
    }
}

void ShutDownLogging() {
    tracelog::LogEnable(false);
    try {
        GenICam::CLog::ShutDown();
    } catch (const std::exception &) {
        assert(false && "Exception during CorvoTerminate()!");
    }
    loggingInitialized = false;
}

} // namespace

void CorvoInitialize() {
    const std::lock_guard<std::mutex> lock(initMutex);
    if (++initCount > 1)
        return;
    InitializeLogging();
    loggingInitialized = true;
    tracelog::LogEnable(true);
}

void CorvoTerminate(bool shutDownLogging) {
    if (initCount == 0) {
        tracelog::LogTrace(BaseCategory(), tracelog::lvInfo,
                           "CorvoTerminate called after corvo has already terminated");
        return;
    }
    if (--initCount > 0)
        return;
    if (terminationHandler != nullptr)
        terminationHandler();
    ClearInternalFlags(InternalFlag_UntilTermination);
    tracelog::LogTrace(BaseCategory(), tracelog::lvNotice, "Terminated Corvo for Linux.");
    if (shutDownLogging && !IsInternalFlagSet(InternalFlag_HostManagesLogging))
        ShutDownLogging();
}

void SetTerminationHandler(void (*handler)() noexcept) { terminationHandler = handler; }

// NOLINTNEXTLINE(readability-non-const-parameter): they are written through a copy
void GetCorvoVersion(unsigned int *major, unsigned int *minor, unsigned int *subminor, unsigned int *build) {
    const unsigned int *part = VERSION;
    for (unsigned int *target : {major, minor, subminor, build}) {
        if (target != nullptr)
            *target = *part;
        ++part;
    }
}

const char *GetCorvoVersionString() { return VERSION_STRING; }

void AddInternalFlags(std::int64_t bits) {
    const std::lock_guard<std::mutex> lock(globalsLock);
    internalFlags |= bits;
}

void ClearInternalFlags(std::int64_t bits) {
    const std::lock_guard<std::mutex> lock(globalsLock);
    internalFlags &= ~bits;
}

std::int64_t GetInternalFlags() {
    const std::lock_guard<std::mutex> lock(globalsLock);
    return internalFlags;
}

bool IsInternalFlagSet(std::int64_t bits) { return (GetInternalFlags() & bits) != 0; }

} // namespace Corvo
