#pragma once

#include "GenApi/Types.h"

#include <string_view>

namespace GenApi {

// Texts of the file's enumerations. An unknown text counts as the standard's default.

EAccessMode ParseAccessMode(std::string_view text);           ///< Default RO, which all registers have.
EVisibility ParseVisibility(std::string_view text);           ///< Default Beginner.
ECachingMode ParseCachingMode(std::string_view text);         ///< Default WriteThrough.
ERepresentation ParseRepresentation(std::string_view text);   ///< Default PureNumber.
EDisplayNotation ParseDisplayNotation(std::string_view text); ///< Default automatic.

} // namespace GenApi
