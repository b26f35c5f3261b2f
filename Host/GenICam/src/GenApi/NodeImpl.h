#pragma once

#include "CallbackList.h"
#include "Description.h"
#include "Evaluation.h"

#include "GenApi/INode.h"
#include "GenApi/ISelector.h"

#include <optional>

namespace GenApi {

class CNodeMapImpl;

enum class ELimit : uint8_t { Min, Max, Inc };

/// How a value is written along a chain of nodes.
struct SWriting {
    /// Each node of the chain checks the limits that hold for it.
    bool verify = false;
    /// Nothing is written, but whatever would keep a node from writing is thrown.
    bool isRehearsal = false;

    /// For a value that the file gives: no limit of the file's speaks against it.
    SWriting Unverified() const { return {false, isRehearsal}; }
};

/// What all nodes share, and how nodes use each other.
///
/// A node reads its properties from the description whenever it needs them; it keeps only what changes at run time. The
/// public operations take the map's lock and check access modes. The others run with the lock held and check neither
/// access modes nor limits, so that a chain of nodes is checked once, by the one the user addressed.
class CNodeImpl : public INode, public ISelector {
public:
    CNodeImpl(CNodeMapImpl &map, int32_t index);
    ~CNodeImpl() override;

    EAccessMode GetAccessMode() const override;
    gcstring GetName(bool FullQualified) const override;
    ENameSpace GetNameSpace() const override { return m_description.nameSpace; }
    EVisibility GetVisibility() const override;
    gcstring GetToolTip() const override { return TextProperty(EProperty::ToolTip); }
    gcstring GetDescription() const override { return TextProperty(EProperty::Description); }
    gcstring GetDisplayName() const override;
    gcstring GetDeviceName() const override;
    gcstring GetDocuURL() const override { return TextProperty(EProperty::DocuURL); }
    gcstring GetEventID() const override { return TextProperty(EProperty::EventID); }
    bool IsDeprecated() const override;
    bool IsStreamable() const override;
    bool IsFeature() const override;
    EInterfaceType GetPrincipalInterfaceType() const override { return intfIBase; }
    INodeMap *GetNodeMap() const override;
    void InvalidateNode() override;
    bool IsCachable() const override { return GetCachingMode() != NoCache; }
    ECachingMode GetCachingMode() const override;
    int64_t GetPollingTime() const override;
    void GetChildren(NodeList_t &Children, ELinkType LinkType) const override;
    void GetParents(NodeList_t &Parents) const override;
    INode *GetAlias() const override { return TargetOf(EProperty::pAlias); }
    INode *GetCastAlias() const override { return TargetOf(EProperty::pCastAlias); }
    void GetPropertyNames(StringList_t &PropertyNames) const override;
    bool GetProperty(const gcstring &PropertyName, gcstring &ValueStr, gcstring &AttributeStr) override;
    void ImposeAccessMode(EAccessMode ImposedAccessMode) override;
    void ImposeVisibility(EVisibility ImposedVisibility) override;
    CallbackHandleType RegisterCallback(CNodeCallback *pCallback) override;
    bool DeregisterCallback(CallbackHandleType hCallback) override;

    bool IsSelector() const override { return Has(EProperty::pSelected); }
    void GetSelectedFeatures(FeatureList_t &list) const override;
    void GetSelectingFeatures(FeatureList_t &list) const override;

    CNodeMapImpl &Map() const { return m_map; }
    int32_t Index() const { return m_index; }
    ENodeType Type() const { return m_description.type; }
    std::string_view Name() const { return m_description.name; }
    /// For messages; ends in a zero as all names do.
    const char *NameText() const { return m_description.name.data(); }

    bool Has(EProperty id) const { return m_description.has.test(static_cast<std::size_t>(id)); }
    /// The node's properties in the order of the file.
    const SProperty *begin() const { return m_properties; }
    const SProperty *end() const { return m_properties + m_description.propertyCount; }
    /// The first property of that kind, or null.
    const SProperty *Find(EProperty id) const;
    std::string_view Text(EProperty id, std::string_view fallback = {}) const;
    /// The node a property names. \throws RuntimeException when there is none.
    CNodeImpl &Target(const SProperty &property) const;
    /// The same for the first property of that kind; null when it is missing or names no node.
    CNodeImpl *TargetOf(EProperty id) const;
    /// The number a property gives or refers to. \throws RuntimeException when the text is no number.
    int64_t IntegerOf(const SProperty &property) const;
    double FloatOf(const SProperty &property) const;
    /// The number given by a literal or else by a reference, if any.
    std::optional<int64_t> IntegerProperty(EProperty literal, EProperty reference) const;
    std::optional<double> FloatProperty(EProperty literal, EProperty reference) const;

    EAccessMode AccessMode() const;
    /// What the node that a property names leaves of this one's mode, when this one cannot do without reading it: RW,
    /// or else NA or NI.
    EAccessMode SourceAccessMode(const SProperty &property) const;
    /// \throws AccessException naming the mode; RuntimeException when a reference of the node leads nowhere.
    void CheckReadable() const;
    void CheckWritable() const;

    int64_t ReadInteger(bool ignoreCache) const;
    double ReadFloat(bool ignoreCache) const;
    std::string ReadText(bool ignoreCache) const;
    void WriteInteger(int64_t value, SWriting how);
    void WriteFloat(double value, SWriting how);
    void WriteText(const std::string &text);
    int64_t IntegerLimit(ELimit limit) const;
    double FloatLimit(ELimit limit) const;
    /// Whether the value moves in steps.
    virtual bool HasIncrement() const { return true; }
    int64_t MaxTextLength() const;

    ECachingMode CachingMode() const;
    bool IsCached() const;
    ERepresentation Representation() const;
    virtual void DropCache() {}
    /// The node's polling time is over. To be called within a CUpdate.
    virtual void Polled();
    bool IsPollingBlocked() const;
    /// \throws RuntimeException when one of the node's error indicators is not zero.
    void CheckErrors() const;

    bool IsEvaluating(EEvaluated what) const { return (m_evaluating & static_cast<uint16_t>(what)) != 0; }
    const CCallbackList &Callbacks() const { return m_callbacks; }

protected:
    /// The mode before conditions, imposed modes and locks are applied.
    virtual EAccessMode OwnAccessMode() const { return RO; }
    virtual int64_t DoReadInteger(bool ignoreCache) const;
    virtual double DoReadFloat(bool ignoreCache) const;
    virtual std::string DoReadText(bool ignoreCache) const;
    /// Whether the node writes doubles, not integers.
    virtual bool IsReal() const { return false; }
    virtual void DoWriteInteger(int64_t value, SWriting how);
    virtual void DoWriteFloat(double value, SWriting how);
    /// The integer to write for a double.
    virtual int64_t IntegerFor(double value) const { return RoundToInteger(value); }
    /// \throws an exception that tells why the value is not allowed.
    virtual void VerifyInteger(int64_t value) const;
    virtual void DoWriteText(const std::string &text);
    /// The limit the file gives or else the natural one.
    virtual int64_t DoIntegerLimit(ELimit limit) const;
    virtual double DoFloatLimit(ELimit limit) const;
    /// Limit where the file gives none.
    virtual int64_t NaturalIntegerLimit(ELimit limit) const;
    std::optional<double> GivenFloatLimit(ELimit limit) const;
    /// False when the node that a limit is to be read from cannot be read; then the natural limit holds.
    bool IsLimitKnown(ELimit limit) const;
    virtual int64_t DoMaxTextLength() const;
    virtual ECachingMode DoCachingMode() const { return WriteThrough; }
    virtual bool DoIsCached() const { return true; }
    /// \throws OutOfRangeException when the nearest integer has more than 64 bits.
    int64_t RoundToInteger(double value) const;
    /// Representation where the file gives none.
    virtual ERepresentation NaturalRepresentation() const { return PureNumber; }

private:
    friend class CEvaluationScope;

    gcstring TextProperty(EProperty id) const { return std::string(Text(id)); }
    void CheckReferences() const;
    EAccessMode DetermineAccessMode() const;
    /// Whether the node behind a condition is true; \p unreadable stands for one that cannot be read.
    bool Condition(EProperty id, bool absent, bool unreadable) const;
    void GetTerminals(NodeList_t &terminals) const;

    CNodeMapImpl &m_map;
    const SNodeDescription &m_description;
    const SProperty *m_properties;
    int32_t m_index;
    EAccessMode m_imposedAccessMode = RW;
    EVisibility m_imposedVisibility = Beginner;
    mutable uint16_t m_evaluating = 0;
    /// The access mode found in the evaluation of that epoch.
    mutable EAccessMode m_knownAccessMode = NI;
    mutable uint64_t m_accessModeEpoch = 0;
    CCallbackList m_callbacks;
};

} // namespace GenApi
