#pragma once

#include "GenApi/NodeMapFactory.h"
#include "MinimalCorvo/Types.h"

#include <cstdint>
#include <vector>

namespace Corvo {

/// True for data that begins with the signature of a zip archive.
bool IsZipped(const std::vector<std::uint8_t> &data);
/// True for data that is "file://" and a path instead of a description.
bool NamesFile(const std::vector<std::uint8_t> &data);

/// A factory for the node map of a device, see ICorvoDevicePrivate::CreateNodemapFromXmlData.
/// \throws RuntimeException for data of fewer than 5 bytes, and when it cannot be read or unzipped.
GenApi::CNodeMapFactory MakeNodeMapFactory(const std::vector<std::uint8_t> &data, const StringList_t &injectedXml);

} // namespace Corvo
