#pragma once

#include "GenApi/Types.h"

#include <pugixml.hpp>

#include <memory>
#include <string>
#include <string_view>

namespace GenApi {

/// Limits on what a device or file may make us store.
constexpr std::size_t MaxStoredBytes = 16u << 20;
constexpr std::size_t MaxXmlBytes = 64u << 20;

using XmlDocument = std::shared_ptr<pugi::xml_document>;

/// Reads a whole file of at most MaxStoredBytes. \throws RuntimeException.
std::string ReadDescriptionFile(const gcstring &fileName);

/// Parses a camera description. Tolerates a byte order mark, ISO-8859-1, a text line before the XML and zero bytes
/// after it. \throws RuntimeException on malformed XML (with the offset), a DOCTYPE, another root element, too much
/// content or too deep a nesting.
XmlDocument ParseXml(std::string_view bytes);

/// Calls `visit(element)` for each node element below the root, in order; groups are entered, not visited.
template <class Visitor> void ForEachNodeElement(pugi::xml_node parent, Visitor &&visit) {
    for (const pugi::xml_node element : parent.children()) {
        if (std::string_view(element.name()) == "Group")
            ForEachNodeElement(element, visit);
        else if (element.type() == pugi::node_element)
            visit(element);
    }
}

} // namespace GenApi
