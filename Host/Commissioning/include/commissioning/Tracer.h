#pragma once

#include <cstdarg>

namespace commissioning {

/// Writes the lines of the operations into one category of the trace log.
class Tracer {
public:
    /// \param category of tracelog::LogGetCatID.
    explicit Tracer(unsigned long category) : m_Category(category) {}

    [[gnu::format(printf, 2, 3)]] void debug(const char *format, ...) const;
    [[gnu::format(printf, 2, 3)]] void progress(const char *format, ...) const;
    [[gnu::format(printf, 2, 3)]] void warning(const char *format, ...) const;
    [[gnu::format(printf, 2, 3)]] void error(const char *format, ...) const;

private:
    unsigned long m_Category;
};

} // namespace commissioning
