#include "GxAssert.h"
#include "TraceImp.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <pthread.h>

namespace GxImp {

std::atomic<std::uint32_t> g_TraceFilter{0};

namespace {

pthread_rwlock_t g_SinkLock = PTHREAD_RWLOCK_INITIALIZER;
Gx::Trace::Sink g_Sink = nullptr;
void *g_SinkContext = nullptr;

} // namespace

void TracePrint(std::uint32_t flag, std::uint32_t level, const char *format, ...) noexcept {
    char text[1024];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);

    pthread_rwlock_rdlock(&g_SinkLock);
    if (g_Sink)
        g_Sink(g_SinkContext, flag, level, text);
    pthread_rwlock_unlock(&g_SinkLock);
}

void AssertionFailed(const char *expression, const char *file, int line) noexcept {
    std::fprintf(stderr, "%s:%d: assertion \"%s\" failed\n", file, line, expression);
    std::abort();
}

} // namespace GxImp

void Gx::Trace::SetSink(Sink sink, void *context, std::uint32_t flags, std::uint32_t level) noexcept {
    pthread_rwlock_wrlock(&GxImp::g_SinkLock);
    GxImp::g_Sink = sink;
    GxImp::g_SinkContext = context;
    GxImp::g_TraceFilter = sink ? flags << 8 | (level & 0xFF) : 0;
    pthread_rwlock_unlock(&GxImp::g_SinkLock);
}
