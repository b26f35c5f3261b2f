#pragma once

namespace GenApi {
class INodeMap;
}

namespace Corvo {

/// Makes a node map from a document compiled into this system. \param name see LoadResourceData. \param type kind of
/// resource, which only other platforms tell apart. \returns a map of the device name "Device" for DestroyNodeMap, or
/// null when the name is null or unknown. \throws GenericException when the document is faulty, which is a mistake of
/// the build: debug builds stop at an assertion.
GenApi::INodeMap *CreateNodeMapFromEmbeddedXML(const char *name, const char *type = nullptr);

} // namespace Corvo
