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

struct SXmlDocument {
    pugi::xml_document tree;
    /// What was parsed: names and values lie in it.
    std::shared_ptr<char[]> text;
    /// Opening and closing tags in the text.
    std::size_t tags = 0;
    /// Some lie in the tree, after a conversion from another encoding or a change.
    bool hasTextInTree = true;
};
using XmlDocument = std::shared_ptr<SXmlDocument>;

/// What has to be kept of a document for the sake of its names and values.
std::shared_ptr<const void> TextBehind(const XmlDocument &document);

/// Reads a whole file of at most MaxStoredBytes. \throws RuntimeException.
std::string ReadDescriptionFile(const gcstring &fileName);

/// Parses a camera description. Tolerates a byte order mark, ISO-8859-1, a text line before the XML and zero bytes
/// after it. \throws RuntimeException on malformed XML (with the offset), a DOCTYPE, another root element, too much
/// content.
/// How deep the elements of a node are nested is checked when they are looked at.
XmlDocument ParseXml(std::string_view bytes);

/// Work on a document is recursive in places. \throws RuntimeException when the element nests others too deeply.
void CheckDepth(pugi::xml_node element);
constexpr int MaxXmlDepth = 256;
[[noreturn]] void RefuseDepth();

/// Calls `visit(element)` for each node element below the root, in order; groups are entered, not visited.
/// \throws RuntimeException when groups are nested too deeply.
template <class Visitor> void ForEachNodeElement(pugi::xml_node parent, Visitor &&visit, int depth = 0) {
    if (depth > MaxXmlDepth)
        RefuseDepth();
    for (const pugi::xml_node element : parent.children()) {
        if (std::string_view(element.name()) == "Group")
            ForEachNodeElement(element, visit, depth + 1);
        else if (element.type() == pugi::node_element)
            visit(element);
    }
}

} // namespace GenApi
