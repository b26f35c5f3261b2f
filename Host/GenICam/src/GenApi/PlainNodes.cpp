#include "PlainNodes.h"

#include "ValueOperations.h"

namespace GenApi {

void CCategoryNode::FromString(const gcstring &, bool) {
    throw ACCESS_EXCEPTION("Node '%s' is not writable. (Access mode RO)", NameText());
}

void CCategoryNode::GetFeatures(FeatureList_t &Features) const {
    Features.clear();
    for (const SProperty &property : *this)
        if (property.id == EProperty::pFeature)
            if (auto *const value = dynamic_cast<IValue *>(Map().At(property.target)))
                Features.push_back(value);
}

gcstring CBooleanNode::ToString(bool Verify, bool IgnoreCache) { return GetValue(Verify, IgnoreCache) ? "1" : "0"; }

void CBooleanNode::FromString(const gcstring &ValueStr, bool Verify) {
    const std::string_view text = Trim(ValueStr.c_str());
    const bool isOn = text == "1" || EqualsNoCase(text, "true");
    if (!isOn && text != "0" && !EqualsNoCase(text, "false"))
        RefuseText(*this, ValueStr);
    SetValue(isOn, Verify);
}

bool CBooleanNode::IsValueCacheValid() const { return GetIsCached(*this); }

void CBooleanNode::SetValue(bool Value, bool Verify) { SetInteger(*this, Value ? 1 : 0, Verify); }

bool CBooleanNode::GetValue(bool, bool IgnoreCache) const { return GetInteger(*this, false, IgnoreCache) != 0; }

int64_t CBooleanNode::DoReadInteger(bool ignoreCache) const { return m_source.Read(ignoreCache) == OnValue() ? 1 : 0; }

void CBooleanNode::DoWriteInteger(int64_t value, SWriting how) {
    m_source.Write(value != 0 ? OnValue() : OffValue(), how.Unverified());
}

int64_t CBooleanNode::OnValue() const {
    const SProperty *const given = Find(EProperty::OnValue);
    return given != nullptr ? IntegerOf(*given) : 1;
}

int64_t CBooleanNode::OffValue() const {
    const SProperty *const given = Find(EProperty::OffValue);
    return given != nullptr ? IntegerOf(*given) : 0;
}

gcstring CCommandNode::ToString(bool, bool IgnoreCache) {
    return std::to_string(GetInteger(*this, false, IgnoreCache));
}

void CCommandNode::FromString(const gcstring &ValueStr, bool Verify) {
    const std::string_view text = Trim(ValueStr.c_str());
    if (text != "1" && !EqualsNoCase(text, "true"))
        RefuseText(*this, ValueStr);
    Execute(Verify);
}

void CCommandNode::Execute(bool Verify) {
    CUpdate update(Map());
    CheckWritable();
    WriteInteger(CommandValue(), {});
    m_isRunning = true;
    if (Verify)
        CheckErrors();
}

bool CCommandNode::IsDone(bool) {
    CUpdate update(Map());
    const bool canTell = m_source.Target() != nullptr && IsReadable(AccessMode());
    if (canTell && ReadInteger(true) == CommandValue())
        return false;
    if (m_isRunning) {
        m_isRunning = false;
        Map().Changed(*this);
    }
    return true;
}

int64_t CCommandNode::CommandValue() const {
    return IntegerProperty(EProperty::CommandValue, EProperty::pCommandValue).value_or(1);
}

bool CStringNode::IsValueCacheValid() const { return GetIsCached(*this); }

void CStringNode::SetValue(const gcstring &Value, bool Verify) {
    SetText(*this, std::string(Value.c_str(), Value.size()), Verify);
}

gcstring CStringNode::GetValue(bool, bool IgnoreCache) { return GetText(*this, IgnoreCache); }

int64_t CStringNode::GetMaxLength() {
    const AutoLock lock(Map().GetLock());
    return MaxTextLength();
}

EAccessMode CStringNode::OwnAccessMode() const {
    if (const CNodeImpl *const target = TargetOf(EProperty::pValue))
        return target->AccessMode();
    return Has(EProperty::Value) ? RW : NI;
}

std::string CStringNode::DoReadText(bool ignoreCache) const {
    if (const CNodeImpl *const target = TargetOf(EProperty::pValue))
        return target->ReadText(ignoreCache);
    return m_text ? *m_text : std::string(Text(EProperty::Value));
}

void CStringNode::DoWriteText(const std::string &text) {
    if (CNodeImpl *const target = TargetOf(EProperty::pValue))
        return target->WriteText(text);
    m_text = text;
    Map().Changed(*this);
}

int64_t CStringNode::DoMaxTextLength() const {
    const CNodeImpl *const target = TargetOf(EProperty::pValue);
    return target != nullptr ? target->MaxTextLength() : CNodeImpl::DoMaxTextLength();
}

ECachingMode CStringNode::DoCachingMode() const {
    const CNodeImpl *const target = TargetOf(EProperty::pValue);
    return target != nullptr ? target->CachingMode() : CNodeImpl::DoCachingMode();
}

bool CStringNode::DoIsCached() const {
    const CNodeImpl *const target = TargetOf(EProperty::pValue);
    return target == nullptr || target->IsCached();
}

void CStringRegNode::SetValue(const gcstring &Value, bool Verify) {
    SetText(*this, std::string(Value.c_str(), Value.size()), Verify);
}

gcstring CStringRegNode::GetValue(bool, bool IgnoreCache) { return GetText(*this, IgnoreCache); }

std::string CStringRegNode::DoReadText(bool ignoreCache) const {
    const CRegisterCache::Bytes bytes = ReadBytes(ignoreCache);
    return {bytes.begin(), std::find(bytes.begin(), bytes.end(), 0)};
}

void CStringRegNode::DoWriteText(const std::string &text) {
    CRegisterCache::Bytes bytes(text.begin(), text.end());
    bytes.resize(CRegisterNode::Length());
    WriteBytes(std::move(bytes));
}

} // namespace GenApi
