#pragma once

#include <atomic>
#include <cstdarg>

/// Trace logging by numbered categories; the lines go to the GenICam logger of the category's name. Every function may
/// be called from any thread; one mutex guards the table of categories.
///
/// A user keeps its category id in a function-local static. An id looked up before CorvoInitialize is invalid and, kept
/// so, stays invalid for good: the library is to be initialised first.
namespace tracelog {

/// Levels in use; LogTrace takes any number and logs one that is not listed here at the logger's priority "not set".
enum LogLevel : unsigned int {
    lvDebug = 16,
    lvInfo = 32,
    lvNotice = 64,
    lvWarning = 128,
    lvError = 256,
    lvCritical = 512
};

constexpr unsigned long INVALID_CATEGORY = ~0UL;

/// The id of the category of that name, compared without regard to case; the first look-up makes the category. There is
/// room for 500 categories and 15500 bytes of names, each with its terminating zero.
/// \returns INVALID_CATEGORY for a null or empty name, while logging is not enabled, and when there is no room.
unsigned long LogGetCatID(const char *name);

/// Logs one line, formatted with printf rules. \returns false when nothing was handed to a logger: no such category, no
/// format, logging not enabled, budget spent.
[[gnu::format(printf, 3, 4)]] bool LogTrace(unsigned long category, unsigned int level, const char *format, ...);
[[gnu::format(printf, 3, 0)]] bool LogTraceVA(unsigned long category, unsigned int level, const char *format,
                                              std::va_list arguments);

/// Bounds what one task writes, on however many threads, so that devices that provoke lines do not push all else out of
/// the log. Lines beyond the bound are counted instead; the number is written when the budget ends.
///
///     LineBudget budget(category, 200);   // then, on each thread that takes part:
///     const LineBudget::Use use(budget);
class LineBudget {
public:
    /// \param category of the line with the number. \param lines to be written, of all categories together.
    LineBudget(unsigned long category, unsigned int lines) : m_category(category), m_lines(lines) {}
    /// All uses must have ended.
    ~LineBudget();
    LineBudget(const LineBudget &) = delete;
    LineBudget &operator=(const LineBudget &) = delete;

    /// Counts what the calling thread writes until the end of the scope, instead of for the budget it used before.
    class Use {
    public:
        explicit Use(LineBudget &budget);
        ~Use();
        Use(const Use &) = delete;
        Use &operator=(const Use &) = delete;

    private:
        LineBudget *m_before;
    };

    /// \returns whether one more line may be written. Any thread may call.
    bool Take() { return ++m_taken <= m_lines; }

private:
    unsigned long m_category;
    unsigned int m_lines;
    std::atomic<unsigned long> m_taken{0};
};

/// Switches logging. Ids stay valid while it is off. \returns true.
bool LogEnable(bool enable);

} // namespace tracelog
