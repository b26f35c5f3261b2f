#pragma once

#include "NodeMapImpl.h"
#include "Text.h"
#include "ValueOperations.h"

#include "GenApi/IInteger.h"

#include <algorithm>
#include <limits>

namespace GenApi {

/// Gives a node the integer interface. \p TBase is CNodeImpl or derived from it and supplies value and limits.
template <class TBase> class TInteger : public TBase, public IInteger {
public:
    using TBase::TBase;

    EInterfaceType GetPrincipalInterfaceType() const override { return intfIInteger; }
    INode *GetNode() override { return this; }
    bool IsValueCacheValid() const override { return GetIsCached(*this); }
    gcstring ToString(bool Verify, bool IgnoreCache) override {
        const int64_t value = GetValue(Verify, IgnoreCache);
        return FormatInteger(value, GetRepresentation());
    }
    void FromString(const gcstring &ValueStr, bool Verify) override {
        const auto value = ParseIntegerAs(ValueStr.c_str(), GetRepresentation());
        if (!value)
            RefuseText(*this, ValueStr);
        SetValue(*value, Verify);
    }

    void SetValue(int64_t Value, bool Verify) override { SetInteger(*this, Value, Verify); }
    int64_t GetValue(bool Verify, bool IgnoreCache) override { return GetInteger(*this, Verify, IgnoreCache); }
    int64_t GetMin() override { return GetIntegerLimit(*this, ELimit::Min); }
    int64_t GetMax() override { return GetIntegerLimit(*this, ELimit::Max); }
    EIncMode GetIncMode() override { return this->Has(EProperty::ValidValueSet) ? listIncrement : fixedIncrement; }
    int64_t GetInc() override { return GetIntegerLimit(*this, ELimit::Inc); }
    std::vector<int64_t> GetListOfValidValues(bool bounded) override { return ValidIntegers(*this, bounded); }
    ERepresentation GetRepresentation() override { return GenApi::GetRepresentation(*this); }
    gcstring GetUnit() override { return std::string(this->Text(EProperty::Unit)); }
    void ImposeMin(int64_t Value) override { Impose(m_imposedMinimum, Value); }
    void ImposeMax(int64_t Value) override { Impose(m_imposedMaximum, Value); }

protected:
    int64_t DoIntegerLimit(ELimit limit) const override {
        const int64_t value = TBase::DoIntegerLimit(limit);
        switch (limit) {
        case ELimit::Min:
            return std::max(value, m_imposedMinimum);
        case ELimit::Max:
            return std::min(value, m_imposedMaximum);
        default:
            return value;
        }
    }

private:
    void Impose(int64_t &limit, int64_t value) {
        CUpdate update(this->Map());
        limit = value;
        this->Map().Changed(*this);
    }

    int64_t m_imposedMinimum = std::numeric_limits<int64_t>::min();
    int64_t m_imposedMaximum = std::numeric_limits<int64_t>::max();
};

} // namespace GenApi
