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

/// The node map of one camera, and the engine that its nodes share.
///
/// **From text to nodes.** The parser turns the XML into an SDescription: plain lists of nodes and of their elements
/// ("properties"), which point into the text. The map links the properties that name other nodes and makes one
/// CNodeImpl for each node. A node keeps nothing of what the file says; it looks into its properties whenever it needs
/// them, so that what nobody asks for costs nothing. Formulas alone are compiled, when first evaluated.
///
/// **Evaluation** is recursion along the references. Each step (a value, a limit, an access mode of one node) stands in
/// a CEvaluationScope, which ends circles, endless chains and explosions with an exception that names the node. So
/// broken files fail where they are broken and nowhere else. Writing goes the same way: a feature hands the value on,
/// through converters, to the register at the end, each node checking its own limits if SWriting says so.
///
/// **Operations.** A public function of a node is one operation: COperation when it only reads, CUpdate when it may
/// change something. Both take the lock. What was worked out stays known until the outermost operation ends or
/// something changes, whichever comes first: SEvaluation::epoch counts both, and whoever remembers a result remembers
/// the epoch with it. That goes for access modes, for the values of formulas and for registers that must not be cached.
///
/// **Cache.** Only registers keep values beyond an operation, per address, in the CRegisterCache of their port. The
/// value of a feature is worked out anew each time, out of cached registers as a rule.
///
/// **Changes.** A write ends the lines of all registers that overlap it. What else depends on it the CDependencyGraph
/// knows: against the direction of the references up to the features (whose limits, conditions and callbacks are
/// concerned), along pInvalidator and pSelected to other nodes, and from nodes invalidated in this way down again to
/// the registers that give them their values. Dependents lose what they keep in the cache, and those with callbacks are
/// noted in the CUpdate.
///
/// **Callbacks** fire when the thread's outermost CUpdate on the map ends: each node once, first the callbacks inside
/// the lock, then, without it, those outside. What callbacks do are operations of their own with regard to what is
/// remembered, but not with regard to callbacks, so that these come to an end.
///
/// **Locks.** One recursive lock guards everything at run time; description and names never change. It is taken before
/// any lock of a port or of the log, and never while a callback registration is waited for.
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
