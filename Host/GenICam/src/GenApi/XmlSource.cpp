#include "XmlSource.h"

#include <algorithm>
#include <fstream>

namespace GenApi {

namespace {

/// Elements and attributes cost many times their text in memory.
constexpr std::size_t maxTags = 1'000'000;

bool IsWideEncoding(std::string_view bytes) {
    return bytes.size() >= 2 && (bytes[0] == '\0' || bytes[1] == '\0' || bytes[0] == '\xFE' || bytes[0] == '\xFF');
}

/// Some devices put a line of text or a byte order mark before the XML and fill the memory behind it with zeros.
std::string_view StripSurroundings(std::string_view bytes) {
    if (IsWideEncoding(bytes))
        return bytes;
    bytes = bytes.substr(0, bytes.find_last_not_of('\0') + 1);
    constexpr std::size_t searchedBytes = 4096;
    std::size_t start = bytes.substr(0, searchedBytes).find("<?xml");
    if (start == std::string_view::npos)
        start = bytes.find('<');
    return start == std::string_view::npos ? bytes : bytes.substr(start);
}

struct SAmount {
    std::size_t tags = 0;
    std::size_t attributes = 0;
};

/// Counts blocks in bytes, which compiles to wide vector additions: as fast as memory can be read.
SAmount AmountIn(std::string_view bytes) {
    constexpr std::size_t blockSize = 255;
    SAmount amount;
    for (; !bytes.empty(); bytes.remove_prefix(std::min(blockSize, bytes.size()))) {
        uint8_t tags = 0;
        uint8_t attributes = 0;
        for (const char ch : bytes.substr(0, blockSize)) {
            tags = static_cast<uint8_t>(tags + (ch == '<' ? 1 : 0));
            attributes = static_cast<uint8_t>(attributes + (ch == '=' ? 1 : 0));
        }
        amount.tags += tags;
        amount.attributes += attributes;
    }
    return amount;
}

void CheckAmount(std::string_view bytes, const SAmount &amount) {
    if (bytes.size() > MaxXmlBytes)
        throw RUNTIME_EXCEPTION("The camera description has %zu bytes, more than the %zu allowed", bytes.size(),
                                MaxXmlBytes);
    if (amount.tags > maxTags || amount.attributes > maxTags)
        throw RUNTIME_EXCEPTION("The camera description has too many elements (%zu tags, %zu attributes)", amount.tags,
                                amount.attributes);
}

class CDepthLimit : public pugi::xml_tree_walker {
public:
    bool for_each(pugi::xml_node &) override { return depth() < MaxXmlDepth; }
};

void RefuseDoctype(const pugi::xml_document &document) {
    for (const pugi::xml_node node : document.children())
        if (node.type() == pugi::node_doctype)
            throw RUNTIME_EXCEPTION("The camera description has a DOCTYPE, which is not allowed");
}

/// Some files qualify all elements, as in "gc:RegisterDescription".
class CPrefixRemover : public pugi::xml_tree_walker {
public:
    bool for_each(pugi::xml_node &node) override {
        const std::string_view name = node.name();
        if (const std::size_t colon = name.find(':'); colon != std::string_view::npos)
            node.set_name(std::string(name.substr(colon + 1)).c_str());
        return true;
    }
};

void RemovePrefixes(pugi::xml_document &document) {
    if (std::string_view(document.document_element().name()).find(':') == std::string_view::npos)
        return;
    CPrefixRemover remover;
    document.traverse(remover);
}

} // namespace

std::string ReadDescriptionFile(const gcstring &fileName) {
    std::ifstream file(fileName.c_str(), std::ios::binary | std::ios::ate);
    const auto size = file ? static_cast<std::streamoff>(file.tellg()) : -1;
    if (size < 0 || static_cast<uint64_t>(size) > MaxStoredBytes)
        throw RUNTIME_EXCEPTION("The camera description file '%s' does not exist or is larger than %zu bytes",
                                fileName.c_str(), MaxStoredBytes);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    if (!file.seekg(0).read(bytes.data(), size))
        throw RUNTIME_EXCEPTION("Cannot read the camera description file '%s'", fileName.c_str());
    return bytes;
}

std::shared_ptr<const void> TextBehind(const XmlDocument &document) {
    return document->hasTextInTree ? std::shared_ptr<const void>(document) : document->text;
}

void RefuseDepth() { throw RUNTIME_EXCEPTION("The camera description nests elements more than %d deep", MaxXmlDepth); }

void CheckDepth(pugi::xml_node element) {
    CDepthLimit limit;
    if (!element.traverse(limit))
        RefuseDepth();
}

XmlDocument ParseXml(std::string_view bytes) {
    const std::string_view xml = StripSurroundings(bytes);
    const SAmount amount = AmountIn(xml);
    CheckAmount(xml, amount);
    auto document = std::make_shared<SXmlDocument>();
    document->tags = amount.tags;
    document->text.reset(new char[xml.size()]);
    std::copy(xml.begin(), xml.end(), document->text.get());
    constexpr unsigned options = pugi::parse_default | pugi::parse_doctype | pugi::parse_embed_pcdata;
    const pugi::xml_parse_result result = document->tree.load_buffer_inplace(document->text.get(), xml.size(), options);
    if (!result)
        throw RUNTIME_EXCEPTION("The camera description is no well-formed XML: %s at offset %td", result.description(),
                                xml.data() - bytes.data() + result.offset);
    RefuseDoctype(document->tree);
    RemovePrefixes(document->tree);
    if (!document->tree.child("RegisterDescription"))
        throw RUNTIME_EXCEPTION("The camera description has no root element 'RegisterDescription'");
    document->hasTextInTree = result.encoding != pugi::encoding_utf8;
    return document;
}

} // namespace GenApi
