#pragma once

namespace GenApi {

/// A file may be wrong throughout; the first few findings of a kind tell enough.
constexpr unsigned MaxTracedFindings = 20;

/// Traces what a camera description has wrong and what was made of it, under the category "GenApi".
[[gnu::format(printf, 1, 2)]] void TraceInfo(const char *format, ...);
[[gnu::format(printf, 1, 2)]] void TraceWarning(const char *format, ...);

} // namespace GenApi
