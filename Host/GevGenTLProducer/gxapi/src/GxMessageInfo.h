#pragma once

#include "gxapi/GxStatus.h"

#include <cstdarg>

/// The catalogue of status texts.
namespace mcgx {

/// A newly allocated copy of a code's text, to be released with FreeMessage; null for a code without text or when
/// memory is exhausted. No text has placeholders: language and arguments are accepted for callers that pass them.
[[nodiscard]] char *GetMessage(GXSTATUS code, std::uint32_t language, ...) noexcept;
[[nodiscard]] char *GetMessageVA(GXSTATUS code, std::uint32_t language, va_list arguments) noexcept;
void FreeMessage(char *message) noexcept;

} // namespace mcgx
