#include "MinimalCorvoGigETL/GxStatusException.h"

#include "Base/GCException.h"
#include "MinimalCorvoGigETL/GxStatus2Msg.h"

namespace Corvo {

String_t GxStatusText(GXSTATUS status) {
    char number[sizeof " (0x12345678)"];
    std::snprintf(number, sizeof number, " (0x%08X)", status);
    return GxStatus2Msg(status) + number;
}

void CGxStatusCheck::ThrowIfFailed(GXSTATUS status, const char *format, ...) const {
    if (status == GX_SUCCESS)
        return;
    std::va_list arguments;
    va_start(arguments, format);
    const String_t message = GenICam::FormatV(format, arguments) + GxStatusText(status).c_str();
    va_end(arguments);
    throw GenICam::RuntimeException(message, m_sourceFileName, m_sourceLine);
}

} // namespace Corvo
