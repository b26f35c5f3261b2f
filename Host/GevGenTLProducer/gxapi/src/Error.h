#pragma once

#include "gxapi/GxStatus.h"

/// The calling thread's current errno.
[[nodiscard]] int GxGetSocketError() noexcept;

/// The system's text for an error, in one static buffer that both functions share: valid until the next call of
/// either, not thread-safe. Traces use GxImp::ErrnoText instead.
[[nodiscard]] const char *GxDecodeErrnoError(int error) noexcept;
[[nodiscard]] const char *GxDecodeSocketError(int error) noexcept;

/// Stores a newly allocated copy of a code's text, to be released with GxFreeMessage; GX_FALSE for a code without text.
[[nodiscard]] GXSTATUS GxDecodeGxStatus(GXSTATUS code, char **pText) noexcept;
void GxFreeMessage(char *message) noexcept;

namespace GxImp {

/// The system's text for an error, for the time of one expression and from any thread.
class ErrnoText {
public:
    explicit ErrnoText(int error) noexcept;
    const char *c_str() const noexcept { return m_Text; }

private:
    char m_Buffer[128] = "";
    const char *m_Text;
};

} // namespace GxImp
