#include "Trace.h"

#include "Log/CLog.h"

#include <cstdarg>

namespace GenApi {

namespace {

GenICam::CLogger &Logger() {
    static GenICam::CLogger *const logger = GenICam::CLog::GetLogger("GenApi");
    return *logger;
}

} // namespace

void TraceInfo(const char *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    Logger().LogVA(GenICam::LogPriority_Info, format, arguments);
    va_end(arguments);
}

void TraceWarning(const char *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    Logger().LogVA(GenICam::LogPriority_Warning, format, arguments);
    va_end(arguments);
}

} // namespace GenApi
