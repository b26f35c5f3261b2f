#pragma once

#include "DependencyGraph.h"
#include "Description.h"
#include "Evaluation.h"
#include "NameIndex.h"
#include "NodeImpl.h"
#include "Update.h"

#include "GenApi/IDestroy.h"
#include "GenApi/IDeviceInfo.h"
#include "GenApi/INodeMap.h"

namespace GenApi {

class CNodeMapImpl final : public INodeMap, public IDeviceInfo, public IDestroy {
public:
    CNodeMapImpl(std::unique_ptr<SDescription> description, const gcstring &deviceName);
    ~CNodeMapImpl() override;

    void GetNodes(NodeList_t &Nodes) const override;
    INode *GetNode(const gcstring &Name) const override;
    uint64_t GetNumNodes() const override { return m_nodes.size(); }
    void InvalidateNodes() const override;
    bool Connect(IPort *pPort, const gcstring &PortName) const override;
    bool Connect(IPort *pPort) const override { return Connect(pPort, "Device"); }
    gcstring GetDeviceName() const override { return m_deviceName; }
    void Poll(int64_t ElapsedTime) override;
    CLock &GetLock() const override { return m_lock; }

    gcstring GetModelName() const override { return std::string(m_description->root.modelName); }
    gcstring GetVendorName() const override { return std::string(m_description->root.vendorName); }
    gcstring GetToolTip() const override { return std::string(m_description->root.toolTip); }
    gcstring GetStandardNameSpace() const override { return std::string(m_description->root.standardNameSpace); }
    void GetSchemaVersion(Version_t &Version) const override;
    void GetDeviceVersion(Version_t &Version) const override;
    gcstring GetProductGuid() const override { return std::string(m_description->root.productGuid); }
    gcstring GetVersionGuid() const override { return std::string(m_description->root.versionGuid); }

    void Destroy() override { delete this; }

    const SDescription &Description() const { return *m_description; }
    /// Null for NoNode.
    CNodeImpl *At(int32_t index) const {
        return index != NoNode ? m_nodes[static_cast<std::size_t>(index)].get() : nullptr;
    }
    CNodeImpl *Find(std::string_view name) const;

    // What follows is used with the lock held.

    SEvaluation &Evaluation() const { return m_evaluation; }
    /// Nodes that are stale when \p node changes.
    std::vector<CNodeImpl *> DependentsOf(const CNodeImpl &node) const;
    /// To be called within a CUpdate: drops what dependent nodes keep, and notes all of them for their callbacks.
    void Changed(const CNodeImpl &node) const { Spread(node, false); }
    /// The same for a node whose value is no longer known: drops what it and the registers below it keep as well.
    void Invalidated(CNodeImpl &node) const;
    /// Whether a category lists the node.
    bool IsFeature(const CNodeImpl &node) const;
    /// The update that changes are reported to. \returns the one before.
    CUpdate *SetCollector(CUpdate *collector) const { return std::exchange(m_collector, collector); }

private:
    struct SPolledNode {
        CNodeImpl *node;
        int64_t period;
        int64_t elapsed;
    };

    void LinkReferences();
    void Spread(const CNodeImpl &origin, bool isInvalidated) const;
    bool Link(SProperty &property) const;
    std::vector<SPolledNode> FindPolledNodes() const;
    CDependencyGraph &Dependencies() const;

    std::unique_ptr<SDescription> m_description;
    gcstring m_deviceName;
    CNameIndex m_names;
    mutable CLock m_lock;
    mutable SEvaluation m_evaluation;
    mutable CUpdate *m_collector = nullptr;
    /// Made when the first change needs it.
    mutable std::unique_ptr<CDependencyGraph> m_dependencies;
    mutable std::optional<std::vector<bool>> m_features;
    std::optional<std::vector<SPolledNode>> m_polledNodes;
    std::vector<std::unique_ptr<CNodeImpl>> m_nodes;
};

} // namespace GenApi
