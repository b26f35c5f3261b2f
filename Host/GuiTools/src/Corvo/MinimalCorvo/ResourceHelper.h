#pragma once

#include <cstddef>

/// The documents compiled into this system, each with a terminating zero. Shared libraries that offer resources export
/// a function of the same name and kind. \param name compared exactly. \param size receives the stored size, the zero
/// included, or 0. \returns null for an unknown name.
extern "C" const void *LoadResourceData(const char *name, std::size_t *size);

/// Documents by name, from this system or from a shared library. Any thread may call.
namespace Resource {

/// Looks the resource up in the shared library \p fileName, or in this system when that is null. \param size receives
/// the size without the terminating zero, or 0. \returns data that lives until FreeResource (for ever, when from this
/// system); null when there is none, or when \p name or \p size is null. Failures are traced on standard error.
const void *GetResourceData(const char *name, const char *fileName, std::size_t *size);

/// The same as text. \param size receives the size with the terminating zero; may be null.
const char *GetResourceString(const char *name, const char *fileName, std::size_t *size);

/// Closes the shared library that the data came from; the data is then gone. \returns false when there is nothing to
/// do, as for data of this system, or when closing failed.
bool FreeResource(const void *data);

/// Writes one line, cut to 511 characters, to standard error.
[[gnu::format(printf, 1, 2)]] void Trace(const char *format, ...);

} // namespace Resource
