#pragma once

#include "FloatInterface.h"
#include "FormulaSet.h"
#include "IntegerInterface.h"

namespace GenApi {

/// A value computed within one evaluation, kept for its length so that a node used over many ways is computed once.
template <class Number> class TKeptValue {
public:
    template <class Compute> Number Get(const CNodeImpl &node, bool ignoreCache, Compute compute) {
        const uint64_t &epoch = node.Map().Evaluation().epoch;
        if (m_epoch == epoch && !ignoreCache)
            return m_value;
        const Number value = compute();
        m_value = value;
        m_epoch = epoch;
        return value;
    }

private:
    Number m_value{};
    uint64_t m_epoch = 0;
};

/// The IntSwissKnife node type.
class CIntSwissKnifeNode : public TInteger<CNodeImpl> {
public:
    using TInteger::TInteger;

protected:
    EAccessMode OwnAccessMode() const override { return Combine(RO, m_formulas.VariablesAccessMode()); }
    int64_t DoReadInteger(bool ignoreCache) const override;
    ECachingMode DoCachingMode() const override { return m_formulas.CachingMode(); }
    bool DoIsCached() const override { return m_formulas.IsCached(); }

private:
    mutable CFormulaSet m_formulas{*this, EFormulaKind::Integer};
    mutable TKeptValue<int64_t> m_kept;
};

/// The SwissKnife node type.
class CSwissKnifeNode : public TFloat<CNodeImpl> {
public:
    using TFloat::TFloat;

protected:
    EAccessMode OwnAccessMode() const override { return Combine(RO, m_formulas.VariablesAccessMode()); }
    double DoReadFloat(bool ignoreCache) const override;
    ECachingMode DoCachingMode() const override { return m_formulas.CachingMode(); }
    bool DoIsCached() const override { return m_formulas.IsCached(); }

private:
    mutable CFormulaSet m_formulas{*this, EFormulaKind::Float};
    mutable TKeptValue<double> m_kept;
};

/// The IntConverter node type: FormulaFrom turns the value of pValue into this node's, FormulaTo the other way round.
class CIntConverterNode : public TInteger<CNodeImpl> {
public:
    using TInteger::TInteger;

protected:
    EAccessMode OwnAccessMode() const override;
    int64_t DoReadInteger(bool ignoreCache) const override;
    void DoWriteInteger(int64_t value, SWriting how) override;
    int64_t NaturalIntegerLimit(ELimit limit) const override;
    ECachingMode DoCachingMode() const override { return m_formulas.CachingMode(); }
    bool DoIsCached() const override { return m_formulas.IsCached(); }

private:
    mutable CFormulaSet m_formulas{*this, EFormulaKind::Integer};
};

/// The Converter node type, as above with doubles.
class CConverterNode : public TFloat<CNodeImpl> {
public:
    using TFloat::TFloat;

protected:
    EAccessMode OwnAccessMode() const override;
    double DoReadFloat(bool ignoreCache) const override;
    void DoWriteFloat(double value, SWriting how) override;
    double NaturalFloatLimit(ELimit limit) const override;
    ECachingMode DoCachingMode() const override { return m_formulas.CachingMode(); }
    bool DoIsCached() const override { return m_formulas.IsCached(); }

private:
    mutable CFormulaSet m_formulas{*this, EFormulaKind::Float};
};

} // namespace GenApi
