#include "NodeImpl.h"

#include "EnumText.h"
#include "NodeMapImpl.h"
#include "Text.h"

#include "GenApi/IValue.h"

#include <algorithm>
#include <unordered_set>

namespace GenApi {

namespace {

void AppendValue(FeatureList_t &list, CNodeImpl *node) {
    if (auto *const value = dynamic_cast<IValue *>(node))
        list.push_back(value);
}

bool IsReadingRelation(ERelation relation) {
    return relation == ERelation::Read || relation == ERelation::Locate || relation == ERelation::ReadWrite;
}
bool IsWritingRelation(ERelation relation) { return relation == ERelation::Write || relation == ERelation::ReadWrite; }

} // namespace

CNodeImpl::CNodeImpl(CNodeMapImpl &map, int32_t index)
    : m_map(map), m_description(map.Description().nodes[static_cast<std::size_t>(index)]),
      m_properties(map.Description().properties.data() + m_description.firstProperty), m_index(index) {}

CNodeImpl::~CNodeImpl() = default;

EAccessMode CNodeImpl::GetAccessMode() const {
    const AutoLock lock(m_map.GetLock());
    return AccessMode();
}

gcstring CNodeImpl::GetName(bool FullQualified) const {
    std::string name(Name());
    if (!FullQualified)
        return name;
    return (GetNameSpace() == Standard ? "Std::" : "Cust::") + name;
}

EVisibility CNodeImpl::GetVisibility() const {
    const AutoLock lock(m_map.GetLock());
    return std::max(ParseVisibility(Text(EProperty::Visibility)), m_imposedVisibility);
}

gcstring CNodeImpl::GetDisplayName() const { return std::string(Text(EProperty::DisplayName, Name())); }

gcstring CNodeImpl::GetDeviceName() const { return m_map.GetDeviceName(); }

bool CNodeImpl::IsDeprecated() const { return IsYes(Text(EProperty::IsDeprecated)); }

bool CNodeImpl::IsStreamable() const { return IsYes(Text(EProperty::Streamable)); }

bool CNodeImpl::IsFeature() const {
    const AutoLock lock(m_map.GetLock());
    return m_map.IsFeature(*this);
}

INodeMap *CNodeImpl::GetNodeMap() const { return &m_map; }

void CNodeImpl::InvalidateNode() {
    CUpdate update(m_map);
    m_map.Invalidated(*this);
}

ECachingMode CNodeImpl::GetCachingMode() const {
    const AutoLock lock(m_map.GetLock());
    return CachingMode();
}

int64_t CNodeImpl::GetPollingTime() const { return ParseInteger(Text(EProperty::PollingTime)).value_or(-1); }

void CNodeImpl::GetPropertyNames(StringList_t &PropertyNames) const {
    PropertyNames.clear();
    PropertyNames.push_back("Name");
    for (const SProperty &property : *this) {
        const gcstring name = std::string(NameOf(property.id));
        if (!PropertyNames.contains(name))
            PropertyNames.push_back(name);
    }
}

bool CNodeImpl::GetProperty(const gcstring &PropertyName, gcstring &ValueStr, gcstring &AttributeStr) {
    AttributeStr.clear();
    ValueStr = PropertyName == "Name" ? GetName(false) : gcstring();
    bool isGiven = PropertyName == "Name";
    const EProperty id = PropertyNamed(std::string_view(PropertyName.c_str(), PropertyName.size()));
    for (const SProperty &property : *this) {
        if (property.id != id)
            continue;
        const CNodeImpl *const target = m_map.At(property.target);
        const char *const separator = isGiven ? "\t" : "";
        ValueStr += separator + std::string(target != nullptr ? target->Name() : property.Text());
        AttributeStr += separator + std::string(property.Attribute());
        isGiven = true;
    }
    return isGiven;
}

void CNodeImpl::ImposeAccessMode(EAccessMode ImposedAccessMode) {
    CUpdate update(m_map);
    m_imposedAccessMode = ImposedAccessMode;
    m_map.Changed(*this);
}

void CNodeImpl::ImposeVisibility(EVisibility ImposedVisibility) {
    const AutoLock lock(m_map.GetLock());
    m_imposedVisibility = ImposedVisibility;
}

CallbackHandleType CNodeImpl::RegisterCallback(CNodeCallback *pCallback) {
    std::unique_ptr<CNodeCallback> callback(pCallback);
    if (callback == nullptr)
        throw INVALID_ARGUMENT_EXCEPTION("Node '%s': no callback given", NameText());
    const AutoLock lock(m_map.GetLock());
    return m_callbacks.Add(this, std::move(callback));
}

bool CNodeImpl::DeregisterCallback(CallbackHandleType hCallback) {
    CallbackPtr callback;
    {
        const AutoLock lock(m_map.GetLock());
        callback = m_callbacks.Take(hCallback);
    }
    // Without the map's lock, which a callback that is still running may need.
    if (callback != nullptr)
        callback->Deactivate();
    return callback != nullptr;
}

void CNodeImpl::GetSelectedFeatures(FeatureList_t &list) const {
    list.clear();
    for (const SProperty &property : *this)
        if (property.id == EProperty::pSelected)
            AppendValue(list, m_map.At(property.target));
}

void CNodeImpl::GetSelectingFeatures(FeatureList_t &list) const {
    list.clear();
    const auto selectsThis = [this](const SProperty &property) {
        return property.id == EProperty::pSelected && property.target == m_index;
    };
    for (std::size_t i = 0; i < m_map.GetNumNodes(); ++i) {
        CNodeImpl *const node = m_map.At(static_cast<int32_t>(i));
        if (node->IsSelector() && std::any_of(node->begin(), node->end(), selectsThis))
            AppendValue(list, node);
    }
}

void CNodeImpl::GetChildren(NodeList_t &Children, ELinkType LinkType) const {
    const AutoLock lock(m_map.GetLock());
    Children.clear();
    if (LinkType == ctTerminalNodes)
        return GetTerminals(Children);
    if (LinkType == ctDependingNodes) {
        const std::vector<CNodeImpl *> dependents = m_map.DependentsOf(*this);
        Children.assign(dependents.begin(), dependents.end());
        return;
    }
    for (const SProperty &property : *this) {
        const ERelation relation = RelationOf(property.id);
        const bool isListed = LinkType == ctReadingChildren   ? IsReadingRelation(relation)
                              : LinkType == ctWritingChildren ? IsWritingRelation(relation)
                                                              : relation == ERelation::Invalidate;
        if (isListed && property.target != NoNode)
            Children.push_back(m_map.At(property.target));
    }
}

void CNodeImpl::GetTerminals(NodeList_t &terminals) const {
    std::vector<const CNodeImpl *> found = {this};
    std::unordered_set<const CNodeImpl *> known = {this};
    for (std::size_t at = 0; at < found.size(); ++at) {
        bool isTerminal = true;
        for (const SProperty &property : *found[at]) {
            const CNodeImpl *const target = m_map.At(property.target);
            if (target == nullptr || !IsWritingRelation(RelationOf(property.id)))
                continue;
            isTerminal = false;
            if (known.insert(target).second)
                found.push_back(target);
        }
        if (isTerminal)
            terminals.push_back(m_map.At(found[at]->Index()));
    }
}

void CNodeImpl::GetParents(NodeList_t &Parents) const {
    Parents.clear();
    for (std::size_t i = 0; i < m_map.GetNumNodes(); ++i) {
        CNodeImpl *const node = m_map.At(static_cast<int32_t>(i));
        if (std::any_of(node->begin(), node->end(), [this](const SProperty &p) { return p.target == m_index; }))
            Parents.push_back(node);
    }
}

const SProperty *CNodeImpl::Find(EProperty id) const {
    if (!Has(id))
        return nullptr;
    return std::find_if(begin(), end(), [id](const SProperty &property) { return property.id == id; });
}

std::string_view CNodeImpl::Text(EProperty id, std::string_view fallback) const {
    const SProperty *const property = Find(id);
    return property != nullptr ? property->Text() : fallback;
}

CNodeImpl &CNodeImpl::Target(const SProperty &property) const {
    CNodeImpl *const target = m_map.At(property.target);
    if (target == nullptr)
        throw RUNTIME_EXCEPTION("Node '%s' refers in '%s' to the node '%.*s', which does not exist", NameText(),
                                NameOf(property.id).data(), static_cast<int>(property.Text().size()),
                                property.Text().data());
    return *target;
}

CNodeImpl *CNodeImpl::TargetOf(EProperty id) const {
    const SProperty *const property = Find(id);
    return property != nullptr ? m_map.At(property->target) : nullptr;
}

int64_t CNodeImpl::IntegerOf(const SProperty &property) const {
    if (RelationOf(property.id) != ERelation::None)
        return Target(property).ReadInteger(false);
    if (const auto value = ParseInteger(property.Text()))
        return *value;
    throw RUNTIME_EXCEPTION("Node '%s': '%.*s' in '%s' is no integer", NameText(),
                            static_cast<int>(property.Text().size()), property.Text().data(),
                            NameOf(property.id).data());
}

double CNodeImpl::FloatOf(const SProperty &property) const {
    if (RelationOf(property.id) != ERelation::None)
        return Target(property).ReadFloat(false);
    if (const auto value = ParseFloat(property.Text()))
        return *value;
    throw RUNTIME_EXCEPTION("Node '%s': '%.*s' in '%s' is no number", NameText(),
                            static_cast<int>(property.Text().size()), property.Text().data(),
                            NameOf(property.id).data());
}

std::optional<int64_t> CNodeImpl::IntegerProperty(EProperty literal, EProperty reference) const {
    if (const SProperty *const property = Find(literal))
        return IntegerOf(*property);
    if (const SProperty *const property = Find(reference))
        return IntegerOf(*property);
    return std::nullopt;
}

std::optional<double> CNodeImpl::FloatProperty(EProperty literal, EProperty reference) const {
    if (const SProperty *const property = Find(literal))
        return FloatOf(*property);
    if (const SProperty *const property = Find(reference))
        return FloatOf(*property);
    return std::nullopt;
}

} // namespace GenApi
