#pragma once

#include <functional>
#include <string_view>

namespace commissioning {

/// Calls \p visit with each character of a text in UTF-8 and its bytes, whatever the locale of the process is; with 0
/// and one byte for a NUL and for what is no UTF-8.
void forEachCharacter(std::string_view text, const std::function<void(wchar_t, std::string_view)> &visit);

} // namespace commissioning
