#pragma once

#include <string>
#include <string_view>

namespace GenApi {

/// Unzips the camera description from an archive: its first file with the extension ".xml", else its first file.
/// \throws RuntimeException when the archive is damaged, or larger or more densely packed than a description can be.
std::string ReadZippedXml(std::string_view stored);

} // namespace GenApi
