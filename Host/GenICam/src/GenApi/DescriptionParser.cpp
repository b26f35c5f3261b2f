#include "DescriptionParser.h"

#include "Text.h"
#include "Trace.h"

#include <set>
#include <unordered_map>

namespace GenApi {

namespace {

constexpr std::size_t maxNodes = 200'000;
constexpr std::size_t maxProperties = 2'000'000;
constexpr uint32_t maxPropertiesOfANode = 65'536;

std::optional<ENodeType> NodeTypeNamed(std::string_view element) {
    static const std::unordered_map<std::string_view, ENodeType> types = {
        {"Category", ENodeType::Category},
        {"Port", ENodeType::Port},
        {"Integer", ENodeType::Integer},
        {"IntReg", ENodeType::IntReg},
        {"MaskedIntReg", ENodeType::MaskedIntReg},
        {"IntSwissKnife", ENodeType::IntSwissKnife},
        {"IntConverter", ENodeType::IntConverter},
        {"Float", ENodeType::Float},
        {"FloatReg", ENodeType::FloatReg},
        {"SwissKnife", ENodeType::SwissKnife},
        {"Converter", ENodeType::Converter},
        {"Boolean", ENodeType::Boolean},
        {"Command", ENodeType::Command},
        {"Enumeration", ENodeType::Enumeration},
        {"EnumEntry", ENodeType::EnumEntry},
        {"String", ENodeType::String},
        {"StringReg", ENodeType::StringReg},
        {"Register", ENodeType::Register},
        {"Node", ENodeType::Node},
        {"AdvFeatureLock", ENodeType::Unavailable},
        {"ConfRom", ENodeType::Unavailable},
        {"DcamLock", ENodeType::Unavailable},
        {"IntKey", ENodeType::Unavailable},
        {"SmartFeature", ENodeType::Unavailable},
        {"TextDesc", ENodeType::Unavailable},
        {"TxtKey", ENodeType::Unavailable},
    };
    const auto found = types.find(element);
    return found != types.end() ? std::optional(found->second) : std::nullopt;
}

bool HasAddress(ENodeType type) {
    return type == ENodeType::IntReg || type == ENodeType::MaskedIntReg || type == ENodeType::FloatReg ||
           type == ENodeType::StringReg || type == ENodeType::Register;
}

const char *RawAttribute(pugi::xml_node element, const char *name) { return element.attribute(name).value(); }
std::string_view Attribute(pugi::xml_node element, const char *name) { return Trim(RawAttribute(element, name)); }

/// An element within a node that is a node of its own; its property gets the new node as target.
struct SNested {
    std::size_t property;
    pugi::xml_node element;
};

class CDescriptionParser {
public:
    explicit CDescriptionParser(const XmlDocument &document) {
        m_description->text = TextBehind(document);
        m_description->properties.reserve(document->tags / 2);
    }

    std::unique_ptr<SDescription> Parse(pugi::xml_node root) {
        ParseRootAttributes(root);
        ForEachNodeElement(root, [this](pugi::xml_node element) { ParseTopLevel(element); });
        return std::move(m_description);
    }

private:
    void ParseRootAttributes(pugi::xml_node root);
    void ParseTopLevel(pugi::xml_node element);
    void ParseNode(pugi::xml_node element, ENodeType type, std::string_view name);
    void ParseStructReg(pugi::xml_node element);
    std::vector<SProperty> ParseCommonProperties(pugi::xml_node element, std::vector<pugi::xml_node> &formulas);
    void ParseStructEntry(pugi::xml_node element, const std::vector<SProperty> &common);
    /// Adds the properties of an element's children to the present node.
    void ParseProperties(pugi::xml_node element, ENodeType type, std::vector<SNested> &nested);
    void ParseProperty(pugi::xml_node element, EProperty id);
    void ParseNested(std::string_view ownerName, const std::vector<SNested> &nested);
    void ParseNestedNode(pugi::xml_node element, ENodeType type, std::string_view ownerName);

    void BeginNode(pugi::xml_node element, ENodeType type, std::string_view name);
    /// For the caller to fill in.
    SProperty &AddProperty(EProperty id);
    const char *TextOf(pugi::xml_node element);
    const char *Keep(std::string text) { return m_description->madeTexts.emplace_back(std::move(text)).c_str(); }
    void SkipUnknown(pugi::xml_node element);

    std::unique_ptr<SDescription> m_description = std::make_unique<SDescription>();
    std::set<std::string_view> m_skippedNames;
};

uint16_t VersionNumber(pugi::xml_node root, const char *name) {
    return static_cast<uint16_t>(ParseInteger(Attribute(root, name)).value_or(0));
}

void CDescriptionParser::ParseRootAttributes(pugi::xml_node root) {
    SRootAttributes &attributes = m_description->root;
    attributes.modelName = Attribute(root, "ModelName");
    attributes.vendorName = Attribute(root, "VendorName");
    attributes.toolTip = Attribute(root, "ToolTip");
    attributes.standardNameSpace = Attribute(root, "StandardNameSpace");
    attributes.productGuid = Attribute(root, "ProductGuid");
    attributes.versionGuid = Attribute(root, "VersionGuid");
    const char *const schema[] = {"SchemaMajorVersion", "SchemaMinorVersion", "SchemaSubMinorVersion"};
    const char *const device[] = {"MajorVersion", "MinorVersion", "SubMinorVersion"};
    for (std::size_t i = 0; i < 3; ++i) {
        attributes.schemaVersion[i] = VersionNumber(root, schema[i]);
        attributes.deviceVersion[i] = VersionNumber(root, device[i]);
    }
    if (attributes.schemaVersion[0] > 1)
        TraceWarning("Camera description of schema %u.%u is read as schema 1.1", attributes.schemaVersion[0],
                     attributes.schemaVersion[1]);
}

void CDescriptionParser::ParseTopLevel(pugi::xml_node element) {
    const std::string_view elementName = element.name();
    if (elementName == "StructReg")
        return ParseStructReg(element);
    const auto type = NodeTypeNamed(elementName);
    const std::string_view name = Attribute(element, "Name");
    if (!type || name.empty())
        return SkipUnknown(element);
    ParseNode(element, *type, name);
}

void CDescriptionParser::ParseNode(pugi::xml_node element, ENodeType type, std::string_view name) {
    BeginNode(element, type, name);
    std::vector<SNested> nested;
    ParseProperties(element, type, nested);
    ParseNested(name, nested);
}

void CDescriptionParser::ParseProperties(pugi::xml_node element, ENodeType type, std::vector<SNested> &nested) {
    for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) {
        const std::string_view childName = child.name();
        const EProperty id = PropertyNamed(childName);
        if (id != EProperty::Count) {
            ParseProperty(child, id);
        } else if (type == ENodeType::Enumeration && childName == "EnumEntry") {
            nested.push_back({m_description->properties.size(), child});
            AddProperty(EProperty::pEnumEntry);
        } else if (HasAddress(type) && childName == "IntSwissKnife") {
            nested.push_back({m_description->properties.size(), child});
            AddProperty(EProperty::pAddress);
        } else if (child.type() == pugi::node_element) {
            SkipUnknown(child);
        }
    }
}

void CDescriptionParser::ParseProperty(pugi::xml_node element, EProperty id) {
    SProperty &property = AddProperty(id);
    property.text = TextOf(element);
    switch (id) {
    case EProperty::pVariable:
    case EProperty::Constant:
    case EProperty::Expression:
        property.attribute = RawAttribute(element, "Name");
        break;
    case EProperty::ValueIndexed:
    case EProperty::pValueIndexed:
        property.attribute = RawAttribute(element, "Index");
        break;
    case EProperty::pIndex:
        property.attribute = RawAttribute(element, "Offset");
        break;
    default:
        break;
    }
    if (id == EProperty::pIndex && !element.attribute("pOffset").empty())
        AddProperty(EProperty::pOffset).text = RawAttribute(element, "pOffset");
}

void CDescriptionParser::ParseNested(std::string_view ownerName, const std::vector<SNested> &nested) {
    for (const SNested &child : nested) {
        SProperty &property = m_description->properties[child.property];
        property.target = static_cast<int32_t>(m_description->nodes.size());
        const bool isEntry = property.id == EProperty::pEnumEntry;
        ParseNestedNode(child.element, isEntry ? ENodeType::EnumEntry : ENodeType::IntSwissKnife, ownerName);
    }
}

void CDescriptionParser::ParseNestedNode(pugi::xml_node element, ENodeType type, std::string_view ownerName) {
    std::vector<SNested> none;
    if (type == ENodeType::IntSwissKnife) {
        // The colon keeps an inline formula out of the way of all node names.
        BeginNode(element, type, Keep(std::string(ownerName) + ":IntSwissKnife"));
        return ParseProperties(element, type, none);
    }
    const char *const symbolic = RawAttribute(element, "Name");
    BeginNode(element, type, Keep("EnumEntry_" + std::string(ownerName) + "_" + std::string(Trim(symbolic))));
    ParseProperties(element, type, none);
    if (!m_description->nodes.back().has.test(static_cast<std::size_t>(EProperty::Symbolic)))
        AddProperty(EProperty::Symbolic).text = symbolic;
}

void CDescriptionParser::ParseStructReg(pugi::xml_node element) {
    const std::string_view firstEntry = Attribute(element.child("StructEntry"), "Name");
    std::vector<pugi::xml_node> formulas;
    std::vector<SProperty> common = ParseCommonProperties(element, formulas);
    for (const pugi::xml_node formula : formulas) {
        common.push_back({EProperty::pAddress, static_cast<int32_t>(m_description->nodes.size())});
        ParseNestedNode(formula, ENodeType::IntSwissKnife, firstEntry);
    }
    for (const pugi::xml_node entry : element.children("StructEntry"))
        ParseStructEntry(entry, common);
}

/// What the entries share is collected in a node of its own, which is taken off again.
std::vector<SProperty> CDescriptionParser::ParseCommonProperties(pugi::xml_node element,
                                                                 std::vector<pugi::xml_node> &formulas) {
    auto &properties = m_description->properties;
    const auto start = static_cast<std::ptrdiff_t>(properties.size());
    BeginNode(element, ENodeType::Node, "");
    for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) {
        const std::string_view childName = child.name();
        const EProperty id = PropertyNamed(childName);
        if (id != EProperty::Count)
            ParseProperty(child, id);
        else if (childName == "IntSwissKnife")
            formulas.push_back(child);
        else if (child.type() == pugi::node_element && childName != "StructEntry")
            SkipUnknown(child);
    }
    std::vector<SProperty> common(properties.begin() + start, properties.end());
    properties.erase(properties.begin() + start, properties.end());
    m_description->nodes.pop_back();
    return common;
}

void CDescriptionParser::ParseStructEntry(pugi::xml_node element, const std::vector<SProperty> &common) {
    const std::string_view name = Attribute(element, "Name");
    if (name.empty())
        return SkipUnknown(element);
    BeginNode(element, ENodeType::MaskedIntReg, name);
    std::vector<SNested> none;
    ParseProperties(element, ENodeType::Node, none);
    const auto own = m_description->nodes.back().has;
    for (const SProperty &property : common)
        if (!own.test(static_cast<std::size_t>(property.id)) || property.id == EProperty::pInvalidator)
            AddProperty(property.id) = property;
}

void CDescriptionParser::BeginNode(pugi::xml_node element, ENodeType type, std::string_view name) {
    if (m_description->nodes.size() >= maxNodes)
        throw RUNTIME_EXCEPTION("The camera description has more than %zu nodes", maxNodes);
    const ENameSpace nameSpace = Attribute(element, "NameSpace") == "Standard" ? Standard : Custom;
    const auto first = static_cast<uint32_t>(m_description->properties.size());
    m_description->nodes.push_back({type, nameSpace, name, first, 0, {}});
}

SProperty &CDescriptionParser::AddProperty(EProperty id) {
    if (m_description->properties.size() >= maxProperties)
        throw RUNTIME_EXCEPTION("The camera description has more than %zu elements", maxProperties);
    SNodeDescription &node = m_description->nodes.back();
    if (++node.propertyCount > maxPropertiesOfANode)
        throw RUNTIME_EXCEPTION("Node '%s' has more than %u elements", node.name.data(), maxPropertiesOfANode);
    node.has.set(static_cast<std::size_t>(id));
    return m_description->properties.emplace_back(SProperty{id});
}

/// An element's text is one piece unless a comment or a CDATA section splits it.
const char *CDescriptionParser::TextOf(pugi::xml_node element) {
    const pugi::xml_node first = element.first_child();
    if (!first)
        return element.value();
    CheckDepth(element);
    std::string text(element.value());
    if (text.empty() && !first.next_sibling())
        return first.value();
    for (const pugi::xml_node child : element.children())
        if (child.type() != pugi::node_element)
            text += child.value();
    return Keep(std::move(text));
}

void CDescriptionParser::SkipUnknown(pugi::xml_node element) {
    CheckDepth(element);
    if (m_skippedNames.size() < MaxTracedFindings && m_skippedNames.insert(element.name()).second)
        TraceInfo("Camera description: element '%s' (name '%s') is unknown or incomplete and is skipped",
                  element.name(), element.attribute("Name").value());
}

} // namespace

std::unique_ptr<SDescription> ParseDescription(const XmlDocument &document) {
    return CDescriptionParser(document).Parse(document->tree.child("RegisterDescription"));
}

} // namespace GenApi
