#pragma once

#include "Base/GCString.h"

#include <cstdarg>

namespace log4cpp {
class Category;
}

namespace GenICam {

/// Priorities of log lines, numbered as log4cpp numbers them: the lower, the more urgent. A line is written when its
/// number is at most its logger's threshold, so one of priority LogPriority_NotSet never is.
enum LogPriority : int {
    LogPriority_Critical = 200,
    LogPriority_Error = 300,
    LogPriority_Warning = 400,
    LogPriority_Notice = 500,
    LogPriority_Info = 600,
    LogPriority_Debug = 700,
    LogPriority_NotSet = 800
};

/// A named source of log lines. Any thread may use it; it lives as long as the process.
///
/// Control characters of the finished text become blanks, so that text from a device can neither forge lines nor drive
/// the terminal that shows the log.
class CLogger {
public:
    CLogger(const CLogger &) = delete;
    CLogger &operator=(const CLogger &) = delete;

    /// Formats with printf rules and writes one line. \param priority a LogPriority. Never throws.
    [[gnu::format(printf, 3, 4)]] void Log(int priority, const char *format, ...) noexcept;
    [[gnu::format(printf, 3, 0)]] void LogVA(int priority, const char *format, std::va_list arguments) noexcept;
    bool IsEnabled(int priority) const noexcept;

private:
    friend class CLog;
    explicit CLogger(log4cpp::Category &category) : m_category(category) {}

    log4cpp::Category &m_category;
};

/// The logging library as a whole. Any thread may call it; lines logged while it is not initialised go nowhere.
class CLog {
public:
    /// Sets up where lines go, replacing an earlier set-up.
    ///
    /// The environment variable GENICAM_LOG_CONFIG names a log4cpp property file. Without it, or when it cannot be used
    /// (which is logged), lines of priority info and above go to
    /// `${XDG_STATE_HOME:-$HOME/.local/state}/ostra-lanvane/trace.log` (5 MiB, one backup `trace.log.1`), which several
    /// processes may share; a line that is repeated within a minute is counted instead. When that file cannot be
    /// written there is no log; this is no failure.
    static void Initialize();
    /// Closes the log. Loggers stay valid.
    static void ShutDown();
    /// The logger of that name; dots make a hierarchy ("a" rules over "a.b"). The same name gives the same object.
    static CLogger *GetLogger(const gcstring &name);
};

} // namespace GenICam
