#pragma once

#include "Description.h"
#include "XmlSource.h"

namespace GenApi {

/// Turns a camera description into plain lists, without looking at what the texts mean. References are not linked yet.
/// \throws RuntimeException when it has more nodes or elements than can reasonably be.
std::unique_ptr<SDescription> ParseDescription(const XmlDocument &document);

} // namespace GenApi
