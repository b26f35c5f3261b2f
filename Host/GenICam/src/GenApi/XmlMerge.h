#pragma once

#include "XmlSource.h"

namespace GenApi {

/// Merges the nodes of one description into another: new nodes are added, categories are joined, other nodes replaced
/// unless the injected one has the lower MergePriority.
void InjectXml(pugi::xml_document &target, const pugi::xml_document &injected);

/// A copy with the named node and all it refers to. \throws RuntimeException when there is no such node.
XmlDocument ExtractXml(const pugi::xml_document &document, const gcstring &rootName);

std::string PrintXml(const pugi::xml_document &document);

} // namespace GenApi
