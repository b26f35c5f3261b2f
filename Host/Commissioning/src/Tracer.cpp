#include "commissioning/Tracer.h"

#include "MinimalCorvo/TraceLog.h"

namespace commissioning {

#define LOG_ARGUMENTS(level)                                                                                           \
    std::va_list arguments;                                                                                            \
    va_start(arguments, format);                                                                                       \
    tracelog::LogTraceVA(m_Category, level, format, arguments);                                                        \
    va_end(arguments)

void Tracer::debug(const char *format, ...) const { LOG_ARGUMENTS(tracelog::lvDebug); }

void Tracer::progress(const char *format, ...) const { LOG_ARGUMENTS(tracelog::lvNotice); }

void Tracer::warning(const char *format, ...) const { LOG_ARGUMENTS(tracelog::lvWarning); }

void Tracer::error(const char *format, ...) const { LOG_ARGUMENTS(tracelog::lvError); }

} // namespace commissioning
