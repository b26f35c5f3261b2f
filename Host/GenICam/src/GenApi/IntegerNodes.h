#pragma once

#include "IntegerInterface.h"
#include "RegisterNode.h"
#include "ValueSource.h"

namespace GenApi {

/// The Integer node type.
class CIntegerNode : public TInteger<CNodeImpl> {
public:
    using TInteger::TInteger;

protected:
    EAccessMode OwnAccessMode() const override { return m_source.AccessMode(); }
    int64_t DoReadInteger(bool ignoreCache) const override { return m_source.Read(ignoreCache); }
    void DoWriteInteger(int64_t value, SWriting how) override { m_source.Write(value, how); }
    int64_t NaturalIntegerLimit(ELimit limit) const override;
    ECachingMode DoCachingMode() const override { return m_source.CachingMode(); }
    bool DoIsCached() const override { return m_source.IsCached(); }
    ERepresentation NaturalRepresentation() const override;

private:
    TValueSource<int64_t> m_source{*this};
};

/// The IntReg and MaskedIntReg node types: a bit field of a register of 1 to 8 bytes.
class CIntRegNode : public TInteger<CRegisterNode> {
public:
    using TInteger::TInteger;

protected:
    int64_t DoReadInteger(bool ignoreCache) const override;
    void DoWriteInteger(int64_t value, SWriting how) override;
    int64_t NaturalIntegerLimit(ELimit limit) const override;

private:
    /// Bits counted from the least significant one.
    struct SField {
        std::size_t registerLength;
        unsigned shift;
        unsigned width;

        uint64_t Mask() const { return ~uint64_t{0} >> (64 - width); }
    };

    SField Field() const;
    bool IsSigned() const { return Text(EProperty::Sign) == "Signed"; }
};

} // namespace GenApi
