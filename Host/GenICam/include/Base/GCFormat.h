#pragma once

#include <cstdarg>
#include <string>

namespace GenICam {

/// Formats with printf rules. \param format the format; null gives an empty text. \returns the text, of any length, or
/// the unexpanded format when the C library cannot format it.
///
/// Every function of this code that takes a printf format carries the `format` attribute, so the compiler checks
/// literals against their arguments. Write narrow text "%s" there: "%hs" gives the same text at run time, but the check
/// warns about it.
[[gnu::format(printf, 1, 0)]] std::string FormatV(const char *format, std::va_list arguments);

} // namespace GenICam
