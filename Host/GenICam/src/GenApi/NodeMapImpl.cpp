#include "NodeMapImpl.h"

#include "NodeMaker.h"
#include "PortNode.h"
#include "Trace.h"

namespace GenApi {

namespace {

void CopyVersion(const uint16_t (&from)[3], Version_t &to) {
    to.Major = from[0];
    to.Minor = from[1];
    to.SubMinor = from[2];
}

/// Whether a node cannot work without what the property names.
bool IsEssential(ERelation relation) {
    return relation == ERelation::Read || relation == ERelation::Locate || relation == ERelation::ReadWrite ||
           relation == ERelation::Write || relation == ERelation::Port;
}

void TraceUnresolved(const SNodeDescription &node, const SProperty &property) {
    TraceWarning("Camera description: node '%s' refers to '%.*s', which does not exist", node.name.data(),
                 static_cast<int>(property.Text().size()), property.Text().data());
}

} // namespace

CNodeMapImpl::CNodeMapImpl(std::unique_ptr<SDescription> description, const gcstring &deviceName)
    : m_description(std::move(description)), m_deviceName(deviceName), m_names(m_description->nodes) {
    LinkReferences();
    m_nodes.reserve(m_description->nodes.size());
    for (std::size_t i = 0; i < m_description->nodes.size(); ++i)
        m_nodes.push_back(MakeNode(*this, static_cast<int32_t>(i), m_description->nodes[i].type));
}

CNodeMapImpl::~CNodeMapImpl() = default;

void CNodeMapImpl::LinkReferences() {
    unsigned findings = 0;
    for (std::size_t i = 0; i < m_description->nodes.size(); ++i)
        if (!m_names.Add(static_cast<int32_t>(i)) && findings++ < MaxTracedFindings)
            TraceWarning("Camera description: node '%s' is there twice, the first counts",
                         m_description->nodes[i].name.data());
    for (SNodeDescription &node : m_description->nodes)
        for (uint32_t p = node.firstProperty; p < node.firstProperty + node.propertyCount; ++p)
            if (!Link(m_description->properties[p])) {
                node.isBroken = node.isBroken || IsEssential(RelationOf(m_description->properties[p].id));
                if (findings++ < MaxTracedFindings)
                    TraceUnresolved(node, m_description->properties[p]);
            }
}

/// \returns false when the property names a node that does not exist.
bool CNodeMapImpl::Link(SProperty &property) const {
    if (RelationOf(property.id) == ERelation::None || property.target != NoNode)
        return true;
    property.target = m_names.Find(property.Text());
    return property.target != NoNode;
}

CNodeImpl *CNodeMapImpl::Find(std::string_view name) const { return At(m_names.Find(name)); }

void CNodeMapImpl::GetNodes(NodeList_t &Nodes) const {
    Nodes.clear();
    for (const auto &node : m_nodes)
        Nodes.push_back(node.get());
}

INode *CNodeMapImpl::GetNode(const gcstring &Name) const {
    std::string_view name(Name.c_str(), Name.size());
    for (const std::string_view prefix : {"Std::", "Cust::"})
        if (name.substr(0, prefix.size()) == prefix)
            name.remove_prefix(prefix.size());
    return Find(name);
}

void CNodeMapImpl::InvalidateNodes() const {
    CUpdate update(*this);
    m_evaluation.Advance();
    for (const auto &node : m_nodes) {
        node->DropCache();
        update.Add(*node);
    }
}

bool CNodeMapImpl::Connect(IPort *pPort, const gcstring &PortName) const {
    auto *const port = dynamic_cast<CPortNode *>(GetNode(PortName));
    if (port == nullptr)
        return false;
    port->Connect(pPort);
    return true;
}

void CNodeMapImpl::GetSchemaVersion(Version_t &Version) const {
    CopyVersion(m_description->root.schemaVersion, Version);
}

void CNodeMapImpl::GetDeviceVersion(Version_t &Version) const {
    CopyVersion(m_description->root.deviceVersion, Version);
}

void CNodeMapImpl::Poll(int64_t ElapsedTime) {
    CUpdate update(*this);
    if (!m_polledNodes)
        m_polledNodes = FindPolledNodes();
    for (SPolledNode &polled : *m_polledNodes) {
        polled.elapsed += ElapsedTime;
        if (polled.elapsed < polled.period || polled.node->IsPollingBlocked())
            continue;
        polled.elapsed = 0;
        polled.node->Polled();
    }
}

std::vector<CNodeMapImpl::SPolledNode> CNodeMapImpl::FindPolledNodes() const {
    std::vector<SPolledNode> polled;
    for (const auto &node : m_nodes) {
        const int64_t period = node->GetPollingTime();
        if (period >= 0)
            polled.push_back({node.get(), period, 0});
    }
    return polled;
}

CDependencyGraph &CNodeMapImpl::Dependencies() const {
    if (!m_dependencies)
        m_dependencies = std::make_unique<CDependencyGraph>(*m_description);
    return *m_dependencies;
}

std::vector<CNodeImpl *> CNodeMapImpl::DependentsOf(const CNodeImpl &node) const {
    std::vector<CNodeImpl *> dependents;
    for (const SDependent &dependent : Dependencies().DependentsOf(node.Index()))
        dependents.push_back(At(dependent.node));
    return dependents;
}

void CNodeMapImpl::Invalidated(CNodeImpl &node) const {
    node.DropCache();
    Spread(node, true);
}

void CNodeMapImpl::Spread(const CNodeImpl &origin, bool isInvalidated) const {
    m_evaluation.Advance();
    m_collector->Add(origin);
    for (const SDependent &dependent : Dependencies().DependentsOf(origin.Index(), isInvalidated)) {
        if (dependent.isStale)
            At(dependent.node)->DropCache();
        m_collector->Add(*At(dependent.node));
    }
}

bool CNodeMapImpl::IsFeature(const CNodeImpl &node) const {
    if (!m_features) {
        m_features.emplace(m_nodes.size());
        for (const SProperty &property : m_description->properties)
            if (property.id == EProperty::pFeature && property.target != NoNode)
                (*m_features)[static_cast<std::size_t>(property.target)] = true;
    }
    return (*m_features)[static_cast<std::size_t>(node.Index())];
}

} // namespace GenApi
