#include "GenApi/NodeMapFactory.h"

#include "DescriptionParser.h"
#include "NodeMapImpl.h"
#include "XmlMerge.h"
#include "XmlSource.h"
#include "ZipReader.h"

namespace GenApi {

/// Loaded text, and the document made from it once it is needed.
struct CNodeMapFactory::SContent {
    std::string xml;
    std::vector<XmlDocument> injected;
    XmlDocument document;
    /// The document is no longer what the text says.
    bool isChanged = false;

    bool IsLoaded() const { return !xml.empty() || document != nullptr; }

    void Preprocess() {
        if (document != nullptr)
            return;
        if (!IsLoaded())
            throw LOGICAL_ERROR_EXCEPTION("No camera description has been loaded");
        XmlDocument merged = ParseXml(xml);
        for (const XmlDocument &injection : injected)
            InjectXml(*merged, *injection);
        isChanged = !injected.empty();
        document = std::move(merged);
    }
};

namespace {

std::string ToText(EContentType_t type, std::string_view bytes) {
    return type == ContentType_ZippedXml ? ReadZippedXml(bytes) : std::string(bytes);
}

} // namespace

CNodeMapFactory::CNodeMapFactory() : m_content(std::make_shared<SContent>()) {}

CNodeMapFactory::CNodeMapFactory(EContentType_t fileType, const gcstring &fileName) : CNodeMapFactory() {
    m_content->xml = ToText(fileType, ReadDescriptionFile(fileName));
}

CNodeMapFactory::CNodeMapFactory(EContentType_t dataType, const void *pData, std::size_t dataSize) : CNodeMapFactory() {
    if (pData == nullptr || dataSize == 0 || dataSize > MaxStoredBytes)
        throw RUNTIME_EXCEPTION("A camera description of %zu bytes is empty or larger than the %zu allowed", dataSize,
                                MaxStoredBytes);
    m_content->xml = ToText(dataType, std::string_view(static_cast<const char *>(pData), dataSize));
}

bool CNodeMapFactory::IsLoaded() const { return m_content->IsLoaded(); }

void CNodeMapFactory::AddInjectionData(const CNodeMapFactory &injectionData) {
    injectionData.m_content->Preprocess();
    if (IsPreprocessed())
        throw LOGICAL_ERROR_EXCEPTION("The camera description has been preprocessed already");
    m_content->injected.push_back(injectionData.m_content->document);
}

bool CNodeMapFactory::IsPreprocessed() const { return m_content->document != nullptr; }

void CNodeMapFactory::Preprocess() { m_content->Preprocess(); }

gcstring CNodeMapFactory::ToXml() {
    Preprocess();
    return m_content->isChanged ? PrintXml(*m_content->document) : m_content->xml;
}

CNodeMapFactory CNodeMapFactory::ExtractSubtree(const gcstring &subTreeRootNodeName) {
    Preprocess();
    CNodeMapFactory extract;
    extract.m_content->document = ExtractXml(*m_content->document, subTreeRootNodeName);
    extract.m_content->isChanged = true;
    return extract;
}

INodeMap *CNodeMapFactory::CreateNodeMap(const gcstring &deviceName) {
    Preprocess();
    return new CNodeMapImpl(ParseDescription(m_content->document), deviceName);
}

} // namespace GenApi
