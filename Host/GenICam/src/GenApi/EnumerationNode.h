#pragma once

#include "NodeImpl.h"
#include "ValueSource.h"

#include "GenApi/IEnumeration.h"

namespace GenApi {

/// The EnumEntry node type.
class CEnumEntryNode : public CNodeImpl, public IEnumEntry {
public:
    using CNodeImpl::CNodeImpl;

    EInterfaceType GetPrincipalInterfaceType() const override { return intfIEnumEntry; }
    gcstring GetDisplayName() const override;
    INode *GetNode() override { return this; }
    gcstring ToString(bool Verify, bool IgnoreCache) override;
    void FromString(const gcstring &ValueStr, bool Verify) override;
    bool IsValueCacheValid() const override { return true; }
    int64_t GetValue() override { return Value(); }
    gcstring GetSymbolic() const override { return std::string(Symbolic()); }
    double GetNumericValue() override { return NumericValue(); }
    bool IsSelfClearing() override;

    int64_t Value() const;
    /// NumericValue, or the value where the file gives none.
    double NumericValue() const;
    std::string_view Symbolic() const { return Text(EProperty::Symbolic); }

protected:
    int64_t DoReadInteger(bool) const override { return Value(); }
};

/// The Enumeration node type.
class CEnumerationNode : public CNodeImpl, public IEnumeration {
public:
    using CNodeImpl::CNodeImpl;

    EInterfaceType GetPrincipalInterfaceType() const override { return intfIEnumeration; }
    INode *GetNode() override { return this; }
    gcstring ToString(bool Verify, bool IgnoreCache) override;
    void FromString(const gcstring &ValueStr, bool Verify) override;
    bool IsValueCacheValid() const override;
    void GetSymbolics(StringList_t &Symbolics) override;
    void GetEntries(NodeList_t &Entries) override;
    void SetIntValue(int64_t Value, bool Verify) override;
    int64_t GetIntValue(bool Verify, bool IgnoreCache) override;
    IEnumEntry *GetEntryByName(const gcstring &Symbolic) override;
    IEnumEntry *GetEntry(int64_t IntValue) override;
    IEnumEntry *GetCurrentEntry(bool Verify, bool IgnoreCache) override;

    /// Null when there is none.
    CEnumEntryNode *EntryNamed(std::string_view symbolic) const;

protected:
    EAccessMode OwnAccessMode() const override { return m_source.AccessMode(); }
    int64_t DoReadInteger(bool ignoreCache) const override;
    /// Other nodes that want a double see the NumericValue of the present entry.
    double DoReadFloat(bool ignoreCache) const override;
    void DoWriteInteger(int64_t value, SWriting how) override { m_source.Write(value, how.Unverified()); }
    int64_t IntegerFor(double value) const override;
    void VerifyInteger(int64_t value) const override;
    ECachingMode DoCachingMode() const override { return m_source.CachingMode(); }
    bool DoIsCached() const override;

private:
    const std::vector<CEnumEntryNode *> &Entries() const;
    /// Of several entries with that value the first that is available; null when there is none.
    CEnumEntryNode *EntryOf(int64_t value) const;
    /// Whether the device replaces the value by another one of itself.
    bool ClearsItself(int64_t value) const;

    TValueSource<int64_t> m_source{*this};
    /// Collected when first needed.
    mutable std::vector<CEnumEntryNode *> m_entries;
    mutable bool m_hasSelfClearing = false;
};

} // namespace GenApi
