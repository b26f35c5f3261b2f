#pragma once

#include <cstdint>

namespace Corvo {

/// Bits of the internal flags.
enum EInternalFlags : std::int64_t {
    InternalFlag_UntilTermination = 1,  ///< Cleared at final termination; no meaning of its own.
    InternalFlag_HostManagesLogging = 2 ///< Neither initialisation nor termination touches the GenICam logging library.
};

/// Brings up the library and, at the first of nested calls, its logging. To be called before anything else of the
/// library; any thread may call it.
void CorvoInitialize();

/// Undoes one CorvoInitialize; the last one terminates the library: it calls the termination handler, then logs.
/// All calls are to come from one thread, and none while another thread initialises. \param shutDownLogging whether the
/// last call shuts the logging down too.
void CorvoTerminate(bool shutDownLogging = true);

/// What an upper layer has to clean up at final termination, before the logging ends; null for nothing. There is one
/// handler, kept over termination. Call it from the thread that terminates.
void SetTerminationHandler(void (*handler)() noexcept);

/// Stores the parts of the library's version; null pointers are skipped.
void GetCorvoVersion(unsigned int *major, unsigned int *minor, unsigned int *subminor, unsigned int *build);
/// "major.minor.subminor.build"
const char *GetCorvoVersionString();

// Process-wide flags, see EInternalFlags; any thread may use them.
void AddInternalFlags(std::int64_t bits);
void ClearInternalFlags(std::int64_t bits);
std::int64_t GetInternalFlags();
/// True if any of the bits is set.
bool IsInternalFlagSet(std::int64_t bits);

} // namespace Corvo
