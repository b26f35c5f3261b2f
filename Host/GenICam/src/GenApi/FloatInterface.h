#pragma once

#include "EnumText.h"
#include "NodeMapImpl.h"
#include "Text.h"
#include "ValueOperations.h"

#include "GenApi/IEnumeration.h"
#include "GenApi/IFloat.h"
#include "GenApi/IInteger.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace GenApi {

/// Gives a node the float interface. \p TBase is CNodeImpl or derived from it; the node type supplies DoReadFloat,
/// DoWriteFloat and NaturalFloatLimit.
template <class TBase> class TFloat : public TBase, public IFloat {
public:
    using TBase::TBase;

    EInterfaceType GetPrincipalInterfaceType() const override { return intfIFloat; }
    INode *GetNode() override { return this; }
    bool IsValueCacheValid() const override { return GetIsCached(*this); }
    gcstring ToString(bool Verify, bool IgnoreCache) override {
        const bool hasPrecision = this->Has(EProperty::DisplayPrecision);
        return FormatFloat(GetValue(Verify, IgnoreCache), GetDisplayNotation(),
                           hasPrecision ? static_cast<int>(GetDisplayPrecision()) : -1);
    }
    void FromString(const gcstring &ValueStr, bool Verify) override {
        const auto value = ParseFloat(ValueStr.c_str());
        if (!value)
            RefuseText(*this, ValueStr);
        SetValue(*value, Verify);
    }

    void SetValue(double Value, bool Verify) override { SetFloat(*this, Value, Verify); }
    double GetValue(bool Verify, bool IgnoreCache) override { return GetFloat(*this, Verify, IgnoreCache); }
    double GetMin() override { return GetFloatLimit(*this, ELimit::Min); }
    double GetMax() override { return GetFloatLimit(*this, ELimit::Max); }
    bool HasInc() override { return this->HasIncrement(); }
    EIncMode GetIncMode() override {
        if (this->Has(EProperty::ValidValueSet))
            return listIncrement;
        return HasInc() ? fixedIncrement : noIncrement;
    }
    double GetInc() override {
        if (!HasInc())
            throw LOGICAL_ERROR_EXCEPTION("Node '%s' has no increment", this->NameText());
        return GetFloatLimit(*this, ELimit::Inc);
    }
    std::vector<double> GetListOfValidValues(bool bounded) override { return ValidFloats(*this, bounded); }
    ERepresentation GetRepresentation() override { return GenApi::GetRepresentation(*this); }
    gcstring GetUnit() override { return std::string(this->Text(EProperty::Unit)); }
    EDisplayNotation GetDisplayNotation() override {
        return ParseDisplayNotation(this->Text(EProperty::DisplayNotation));
    }
    int64_t GetDisplayPrecision() override {
        constexpr int64_t defaultPrecision = 6;
        constexpr int64_t sensiblePrecision = 40;
        const auto given = ParseInteger(this->Text(EProperty::DisplayPrecision));
        return std::clamp<int64_t>(given.value_or(defaultPrecision), 0, sensiblePrecision);
    }
    IInteger *GetIntAlias() override { return dynamic_cast<IInteger *>(this->GetCastAlias()); }
    IEnumeration *GetEnumAlias() override { return dynamic_cast<IEnumeration *>(this->GetCastAlias()); }
    void ImposeMin(double Value) override { Impose(m_imposedMinimum, Value); }
    void ImposeMax(double Value) override { Impose(m_imposedMaximum, Value); }

    bool HasIncrement() const override { return this->Has(EProperty::Inc) || this->Has(EProperty::pInc); }

protected:
    virtual double NaturalFloatLimit(ELimit limit) const {
        constexpr double largest = std::numeric_limits<double>::max();
        return limit == ELimit::Min ? -largest : largest;
    }

    int64_t DoReadInteger(bool ignoreCache) const override {
        return this->RoundToInteger(this->DoReadFloat(ignoreCache));
    }
    bool IsReal() const override { return true; }
    double DoFloatLimit(ELimit limit) const override {
        const auto given = this->GivenFloatLimit(limit);
        const double value = given ? *given : NaturalFloatLimit(limit);
        switch (limit) {
        case ELimit::Min:
            return std::max(value, m_imposedMinimum);
        case ELimit::Max:
            return std::min(value, m_imposedMaximum);
        default:
            return value;
        }
    }
    /// The integers within the limits.
    int64_t DoIntegerLimit(ELimit limit) const override {
        if (limit == ELimit::Inc)
            return 1;
        const double value = DoFloatLimit(limit);
        return ClampToInteger(limit == ELimit::Min ? std::ceil(value) : std::floor(value));
    }

private:
    void Impose(double &limit, double value) {
        CUpdate update(this->Map());
        limit = value;
        this->Map().Changed(*this);
    }

    double m_imposedMinimum = -std::numeric_limits<double>::infinity();
    double m_imposedMaximum = std::numeric_limits<double>::infinity();
};

} // namespace GenApi
