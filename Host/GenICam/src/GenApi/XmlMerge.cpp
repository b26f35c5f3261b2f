#include "XmlMerge.h"

#include "Text.h"

#include <set>
#include <sstream>
#include <unordered_map>

namespace GenApi {

namespace {

constexpr const char *rootElement = "RegisterDescription";

using ElementsByName = std::unordered_map<std::string, pugi::xml_node>;

std::string NameOf(pugi::xml_node element) { return element.attribute("Name").value(); }

/// The entries of a StructReg stand for themselves. Where names repeat the first counts.
ElementsByName IndexElements(const SXmlDocument &document) {
    ElementsByName elements;
    ForEachNodeElement(document.tree.child(rootElement), [&](pugi::xml_node element) {
        if (std::string_view(element.name()) != "StructReg")
            elements.emplace(NameOf(element), element);
        for (const pugi::xml_node entry : element.children("StructEntry"))
            elements.emplace(NameOf(entry), entry);
    });
    return elements;
}

int64_t Priority(pugi::xml_node element) {
    return ParseInteger(element.attribute("MergePriority").value()).value_or(0);
}

void JoinCategories(pugi::xml_node target, pugi::xml_node injected) {
    std::set<std::string> known;
    for (const pugi::xml_node feature : target.children("pFeature"))
        known.insert(feature.child_value());
    for (const pugi::xml_node feature : injected.children("pFeature"))
        if (known.insert(feature.child_value()).second)
            target.append_copy(feature);
}

/// \returns the element that now stands for the name.
pugi::xml_node InjectElement(pugi::xml_node root, pugi::xml_node target, pugi::xml_node injected) {
    const std::string_view category = "Category";
    if (target.name() == category && injected.name() == category) {
        JoinCategories(target, injected);
        return target;
    }
    if (Priority(injected) < Priority(target))
        return target;
    target.parent().remove_child(target);
    return root.append_copy(injected);
}

class CReferenceCollector : public pugi::xml_tree_walker {
public:
    bool for_each(pugi::xml_node &element) override {
        const std::string_view name = element.name();
        if (name.size() > 1 && name[0] == 'p')
            names.emplace_back(Trim(element.child_value()));
        if (const pugi::xml_attribute offset = element.attribute("pOffset"))
            names.emplace_back(Trim(offset.value()));
        return true;
    }

    std::vector<std::string> names;
};

/// The elements that describe the named node and all it refers to.
std::set<pugi::xml_node> Reachable(const ElementsByName &elements, const std::string &rootName) {
    CReferenceCollector references;
    references.names.push_back(rootName);
    std::set<pugi::xml_node> reached;
    while (!references.names.empty()) {
        const auto found = elements.find(references.names.back());
        references.names.pop_back();
        if (found == elements.end())
            continue;
        const bool isEntry = std::string_view(found->second.name()) == "StructEntry";
        pugi::xml_node element = isEntry ? found->second.parent() : found->second;
        if (reached.insert(element).second)
            element.traverse(references);
    }
    return reached;
}

} // namespace

void InjectXml(SXmlDocument &target, const SXmlDocument &injected) {
    CheckDepth(target.tree);
    CheckDepth(injected.tree);
    target.hasTextInTree = true;
    ElementsByName known = IndexElements(target);
    pugi::xml_node root = target.tree.child(rootElement);
    ForEachNodeElement(injected.tree.child(rootElement), [&](pugi::xml_node element) {
        const auto found = known.find(NameOf(element));
        if (found == known.end() || NameOf(element).empty())
            root.append_copy(element);
        else
            found->second = InjectElement(root, found->second, element);
    });
}

XmlDocument ExtractXml(const SXmlDocument &document, const gcstring &rootName) {
    const std::set<pugi::xml_node> reached = Reachable(IndexElements(document), rootName.c_str());
    if (reached.empty())
        throw RUNTIME_EXCEPTION("The camera description has no node '%s'", rootName.c_str());
    auto extract = std::make_shared<SXmlDocument>();
    const pugi::xml_node root = document.tree.child(rootElement);
    pugi::xml_node copy = extract->tree.append_child(rootElement);
    for (const pugi::xml_attribute attribute : root.attributes())
        copy.append_copy(attribute);
    ForEachNodeElement(root, [&](pugi::xml_node element) {
        if (reached.count(element) != 0)
            copy.append_copy(element);
    });
    return extract;
}

std::string PrintXml(const SXmlDocument &document) {
    std::ostringstream text;
    document.tree.save(text, "  ", pugi::format_default, pugi::encoding_utf8);
    return text.str();
}

} // namespace GenApi
