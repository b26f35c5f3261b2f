#pragma once

#include "MinimalCorvo/Types.h"
#include "gxapi/GxStatus.h"

namespace Corvo {

/// A protocol status as it stands in messages: "TEXT (0x%08X)".
String_t GxStatusText(GXSTATUS status);

/// Turns a protocol status into an exception; used through THROW_IF_GX_FAILED.
class CGxStatusCheck {
public:
    CGxStatusCheck(const char *sourceFileName, unsigned int sourceLine)
        : m_sourceFileName(sourceFileName), m_sourceLine(sourceLine) {}

    /// \throws RuntimeException with the formatted text directly followed by GxStatusText, for any status but 0.
    [[gnu::format(printf, 3, 4)]] void ThrowIfFailed(GXSTATUS status, const char *format, ...) const;

private:
    const char *m_sourceFileName;
    unsigned int m_sourceLine;
};

} // namespace Corvo

/// Usage: `THROW_IF_GX_FAILED(status, "Failed to write memory at 0x%x. ", address);`
#define THROW_IF_GX_FAILED ::Corvo::CGxStatusCheck(__FILE__, __LINE__).ThrowIfFailed
