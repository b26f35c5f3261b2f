#include "GxMessageInfo.h"

#include <cstdlib>
#include <cstring>

namespace {

const char *FindText(GXSTATUS code) noexcept {
    switch (code) {
#define GX_STATUS(code, name, text)                                                                                    \
    case name:                                                                                                         \
        return text;
#include "gxapi/GxStatusTable.inc"
#undef GX_STATUS
    default:
        return nullptr;
    }
}

} // namespace

char *mcgx::GetMessageVA(GXSTATUS code, std::uint32_t, va_list) noexcept {
    const char *text = FindText(code);
    return text ? strdup(text) : nullptr;
}

char *mcgx::GetMessage(GXSTATUS code, std::uint32_t language, ...) noexcept {
    va_list arguments;
    va_start(arguments, language);
    char *message = GetMessageVA(code, language, arguments);
    va_end(arguments);
    return message;
}

void mcgx::FreeMessage(char *message) noexcept { std::free(message); }
