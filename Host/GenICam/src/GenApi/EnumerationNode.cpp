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

double CEnumEntryNode::NumericValue() const {
    const SProperty *const number = Find(EProperty::NumericValue);
    return number != nullptr ? FloatOf(*number) : static_cast<double>(Value());
}

bool CEnumEntryNode::IsSelfClearing() { return IsYes(Text(EProperty::IsSelfClearing)); }

namespace {

void CheckAvailable(const CEnumEntryNode &entry) {
    const EAccessMode mode = entry.AccessMode();
    if (!IsAvailable(mode))
        throw ACCESS_EXCEPTION("Node '%s' is not available. (Access mode %s)", entry.NameText(), AccessModeText(mode));
}

} // namespace

gcstring CEnumerationNode::ToString(bool Verify, bool IgnoreCache) {
    const COperation operation(Map());
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
    if (Verify)
        CheckAvailable(*entry);
    WriteInteger(entry->Value(), {});
    if (Verify)
        CheckErrors();
}

bool CEnumerationNode::IsValueCacheValid() const { return GetIsCached(*this); }

void CEnumerationNode::GetSymbolics(StringList_t &Symbolics) {
    const COperation operation(Map());
    Symbolics.clear();
    for (const CEnumEntryNode *const entry : Entries())
        if (IsAvailable(entry->AccessMode()))
            Symbolics.push_back(entry->GetSymbolic());
}

void CEnumerationNode::GetEntries(NodeList_t &Entries) {
    const COperation operation(Map());
    const auto &entries = CEnumerationNode::Entries();
    Entries.assign(entries.begin(), entries.end());
}

void CEnumerationNode::SetIntValue(int64_t Value, bool Verify) {
    CUpdate update(Map());
    CheckWritable();
    WriteInteger(Value, {Verify});
    if (Verify)
        CheckErrors();
}

void CEnumerationNode::VerifyInteger(int64_t value) const {
    const CEnumEntryNode *const entry = EntryOf(value);
    if (entry == nullptr)
        throw INVALID_ARGUMENT_EXCEPTION("Node '%s' has no entry of value %lld", NameText(),
                                         static_cast<long long>(value));
    CheckAvailable(*entry);
}

int64_t CEnumerationNode::GetIntValue(bool Verify, bool IgnoreCache) {
    const COperation operation(Map());
    const int64_t value = GetInteger(*this, false, IgnoreCache);
    if (Verify)
        VerifyInteger(value);
    return value;
}

IEnumEntry *CEnumerationNode::GetEntryByName(const gcstring &Symbolic) {
    const COperation operation(Map());
    return EntryNamed(Symbolic.c_str());
}

IEnumEntry *CEnumerationNode::GetEntry(int64_t IntValue) {
    const COperation operation(Map());
    return EntryOf(IntValue);
}

IEnumEntry *CEnumerationNode::GetCurrentEntry(bool Verify, bool IgnoreCache) {
    const COperation operation(Map());
    return EntryOf(GetIntValue(Verify, IgnoreCache));
}

/// What a device clears of itself is not known from having been written.
int64_t CEnumerationNode::DoReadInteger(bool ignoreCache) const {
    const int64_t value = m_source.Read(ignoreCache);
    return !ignoreCache && ClearsItself(value) ? m_source.Read(true) : value;
}

bool CEnumerationNode::DoIsCached() const { return m_source.IsCached() && !ClearsItself(m_source.Read(false)); }

double CEnumerationNode::DoReadFloat(bool ignoreCache) const {
    const int64_t value = DoReadInteger(ignoreCache);
    const CEnumEntryNode *const entry = EntryOf(value);
    return entry != nullptr ? entry->NumericValue() : static_cast<double>(value);
}

int64_t CEnumerationNode::IntegerFor(double value) const {
    for (const CEnumEntryNode *const entry : Entries())
        if (entry->NumericValue() == value)
            return entry->Value();
    throw INVALID_ARGUMENT_EXCEPTION("Node '%s' has no entry for %g", NameText(), value);
}

const std::vector<CEnumEntryNode *> &CEnumerationNode::Entries() const {
    if (!m_entries.empty())
        return m_entries;
    for (const SProperty &property : *this)
        if (property.id == EProperty::pEnumEntry)
            if (auto *const entry = dynamic_cast<CEnumEntryNode *>(Map().At(property.target))) {
                m_entries.push_back(entry);
                m_hasSelfClearing = m_hasSelfClearing || entry->IsSelfClearing();
            }
    return m_entries;
}

CEnumEntryNode *CEnumerationNode::EntryNamed(std::string_view symbolic) const {
    for (CEnumEntryNode *const entry : Entries())
        if (entry->Symbolic() == symbolic)
            return entry;
    return nullptr;
}

CEnumEntryNode *CEnumerationNode::EntryOf(int64_t value) const {
    CEnumEntryNode *found = nullptr;
    for (CEnumEntryNode *const entry : Entries()) {
        if (ParseInteger(entry->Text(EProperty::Value)) != value)
            continue;
        if (found == nullptr || (!IsAvailable(found->AccessMode()) && IsAvailable(entry->AccessMode())))
            found = entry;
    }
    return found;
}

bool CEnumerationNode::ClearsItself(int64_t value) const {
    Entries();
    CEnumEntryNode *const entry = m_hasSelfClearing ? EntryOf(value) : nullptr;
    return entry != nullptr && entry->IsSelfClearing();
}

} // namespace GenApi
