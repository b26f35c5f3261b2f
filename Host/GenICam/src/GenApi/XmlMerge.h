#pragma once

#include "XmlSource.h"

namespace GenApi {

/// Merges the nodes of one description into another: new nodes are added, categories are joined, other nodes replaced
/// unless the injected one has the lower MergePriority.
void InjectXml(SXmlDocument &target, const SXmlDocument &injected);

/// A copy with the named node and all it refers to. \throws RuntimeException when there is no such node.
XmlDocument ExtractXml(const SXmlDocument &document, const gcstring &rootName);

std::string PrintXml(const SXmlDocument &document);

} // namespace GenApi
