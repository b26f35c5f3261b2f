#include "Base/GCFormat.h"

#include <cstdio>

namespace GenICam {

std::string FormatV(const char *format, std::va_list arguments) {
    if (format == nullptr)
        return {};
    std::va_list measured;
    va_copy(measured, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    if (length < 0)
        return format;
    std::string text(static_cast<std::size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

} // namespace GenICam
