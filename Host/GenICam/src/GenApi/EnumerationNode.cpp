#include "EnumerationNode.h"

#include "ValueOperations.h"

#include <algorithm>

namespace GenApi {

gcstring CEnumEntryNode::GetDisplayName() const { return std::string(Text(EProperty::DisplayName, Symbolic())); }

gcstring CEnumEntryNode::ToString(bool, bool) { return GetSymbolic(); }

void CEnumEntryNode::FromString(const gcstring &, bool) {
    throw ACCESS_EXCEPTION("Node '%s' is not writable. (Access mode RO)", NameText());
}

int64_t CEnumEntryNode::Value() const {
    const SProperty *const value = Find(EProperty::Value);
    if (value == nullptr)
        throw RUNTIME_EXCEPTION("Node '%s' has no value", NameText());
    return IntegerOf(*value);
}

double CEnumEntryNode::GetNumericValue() {
    const SProperty *const number = Find(EProperty::NumericValue);
    return number != nullptr ? FloatOf(*number) : static_cast<double>(Value());
}

bool CEnumEntryNode::IsSelfClearing() { return IsYes(Text(EProperty::IsSelfClearing)); }

gcstring CEnumerationNode::ToString(bool Verify, bool IgnoreCache) {
    const AutoLock lock(Map().GetLock());
    const int64_t value = GetIntValue(Verify, IgnoreCache);
    const CEnumEntryNode *const entry = EntryOf(value);
    if (entry == nullptr)
        throw RUNTIME_EXCEPTION("Node '%s': no entry has the present value %lld", NameText(),
                                static_cast<long long>(value));
    return entry->GetSymbolic();
}

void CEnumerationNode::FromString(const gcstring &ValueStr, bool Verify) {
    CUpdate update(Map());
    CheckWritable();
    const CEnumEntryNode *const entry = EntryNamed(ValueStr.c_str());
    if (entry == nullptr)
        RefuseText(*this, ValueStr);
    SetIntValue(entry->Value(), Verify);
}

bool CEnumerationNode::IsValueCacheValid() const { return GetIsCached(*this); }

void CEnumerationNode::GetSymbolics(StringList_t &Symbolics) {
    const AutoLock lock(Map().GetLock());
    Symbolics.clear();
    for (const CEnumEntryNode *const entry : Entries())
        if (IsAvailable(entry->AccessMode()))
            Symbolics.push_back(entry->GetSymbolic());
}

void CEnumerationNode::GetEntries(NodeList_t &Entries) {
    const AutoLock lock(Map().GetLock());
    const auto &entries = CEnumerationNode::Entries();
    Entries.assign(entries.begin(), entries.end());
}

void CEnumerationNode::SetIntValue(int64_t Value, bool Verify) {
    CUpdate update(Map());
    CheckWritable();
    if (Verify)
        CheckEntry(Value);
    WriteInteger(Value);
}

void CEnumerationNode::CheckEntry(int64_t value) const {
    const CEnumEntryNode *const entry = EntryOf(value);
    if (entry == nullptr)
        throw INVALID_ARGUMENT_EXCEPTION("Node '%s' has no entry of value %lld", NameText(),
                                         static_cast<long long>(value));
    const EAccessMode mode = entry->AccessMode();
    if (!IsAvailable(mode))
        throw ACCESS_EXCEPTION("Node '%s' is not available. (Access mode %s)", entry->NameText(), AccessModeText(mode));
}

int64_t CEnumerationNode::GetIntValue(bool Verify, bool IgnoreCache) {
    const AutoLock lock(Map().GetLock());
    const int64_t value = GetInteger(*this, false, IgnoreCache);
    if (Verify)
        CheckEntry(value);
    return value;
}

IEnumEntry *CEnumerationNode::GetEntryByName(const gcstring &Symbolic) {
    const AutoLock lock(Map().GetLock());
    return EntryNamed(Symbolic.c_str());
}

IEnumEntry *CEnumerationNode::GetEntry(int64_t IntValue) {
    const AutoLock lock(Map().GetLock());
    return EntryOf(IntValue);
}

IEnumEntry *CEnumerationNode::GetCurrentEntry(bool Verify, bool IgnoreCache) {
    const AutoLock lock(Map().GetLock());
    return EntryOf(GetIntValue(Verify, IgnoreCache));
}

const std::vector<CEnumEntryNode *> &CEnumerationNode::Entries() const {
    if (m_entries.empty())
        for (const SProperty &property : *this)
            if (property.id == EProperty::pEnumEntry)
                if (auto *const entry = dynamic_cast<CEnumEntryNode *>(Map().At(property.target)))
                    m_entries.push_back(entry);
    return m_entries;
}

CEnumEntryNode *CEnumerationNode::EntryNamed(std::string_view symbolic) const {
    for (CEnumEntryNode *const entry : Entries())
        if (entry->Symbolic() == symbolic)
            return entry;
    return nullptr;
}

CEnumEntryNode *CEnumerationNode::EntryOf(int64_t value) const {
    for (CEnumEntryNode *const entry : Entries())
        if (ParseInteger(entry->Text(EProperty::Value)) == value)
            return entry;
    return nullptr;
}

} // namespace GenApi
