#pragma once

#include "FloatInterface.h"
#include "RegisterNode.h"
#include "ValueSource.h"

namespace GenApi {

/// The Float node type.
class CFloatNode : public TFloat<CNodeImpl> {
public:
    using TFloat::TFloat;

    bool HasIncrement() const override;

protected:
    EAccessMode OwnAccessMode() const override { return m_source.AccessMode(); }
    double DoReadFloat(bool ignoreCache) const override { return m_source.Read(ignoreCache); }
    void DoWriteFloat(double value, SWriting how) override { m_source.Write(value, how); }
    double NaturalFloatLimit(ELimit limit) const override;
    ECachingMode DoCachingMode() const override { return m_source.CachingMode(); }
    bool DoIsCached() const override { return m_source.IsCached(); }

private:
    TValueSource<double> m_source{*this};
};

/// The FloatReg node type: an IEEE 754 number of 4 or 8 bytes.
class CFloatRegNode : public TFloat<CRegisterNode> {
public:
    using TFloat::TFloat;

protected:
    double DoReadFloat(bool ignoreCache) const override;
    void DoWriteFloat(double value, SWriting how) override;
    double NaturalFloatLimit(ELimit limit) const override;

private:
    bool IsSingle() const;
};

} // namespace GenApi
