#include "IntegerNodes.h"

namespace GenApi {

int64_t CIntegerNode::NaturalIntegerLimit(ELimit limit) const {
    const CNodeImpl *const target = m_source.Target();
    return target != nullptr ? target->IntegerLimit(limit) : TInteger::NaturalIntegerLimit(limit);
}

ERepresentation CIntegerNode::NaturalRepresentation() const {
    const CNodeImpl *const target = m_source.Target();
    return target != nullptr ? target->Representation() : PureNumber;
}

/// In a big-endian register bit 0 is the most significant one.
CIntRegNode::SField CIntRegNode::Field() const {
    const std::size_t length = Length();
    if (length > sizeof(uint64_t))
        throw RUNTIME_EXCEPTION("Node '%s': an integer register has 1 to 8 bytes, not %zu", NameText(), length);
    const auto bits = static_cast<unsigned>(8 * length);
    if (Type() == ENodeType::IntReg)
        return {length, 0, bits};
    const SProperty *const bit = Find(EProperty::Bit);
    const auto bound = [&](EProperty id, int64_t fallback) {
        const SProperty *const property = bit != nullptr ? bit : Find(id);
        return property != nullptr ? IntegerOf(*property) : fallback;
    };
    const bool isBigEndian = Text(EProperty::Endianess) == "BigEndian";
    const int64_t lsb = bound(EProperty::LSB, isBigEndian ? bits - 1 : 0);
    const int64_t msb = bound(EProperty::MSB, isBigEndian ? 0 : bits - 1);
    const auto [low, high] = std::minmax(lsb, msb);
    if (low < 0 || high >= bits)
        throw RUNTIME_EXCEPTION("Node '%s': bits %lld to %lld do not lie in a register of %zu bytes", NameText(),
                                static_cast<long long>(low), static_cast<long long>(high), length);
    const int64_t shift = isBigEndian ? bits - 1 - high : low;
    return {length, static_cast<unsigned>(shift), static_cast<unsigned>(high - low + 1)};
}

int64_t CIntRegNode::DoReadInteger(bool ignoreCache) const {
    const SField field = Field();
    const uint64_t value = ReadRaw(field.registerLength, ignoreCache) >> field.shift & field.Mask();
    const uint64_t signBit = uint64_t{1} << (field.width - 1);
    const bool isNegative = IsSigned() && (value & signBit) != 0;
    return static_cast<int64_t>(isNegative ? value | ~field.Mask() : value);
}

namespace {

/// Whether the value can be stored as a number with or without sign.
bool Fits(int64_t value, unsigned width) {
    if (width == 64)
        return true;
    return value < 0 ? value >> (width - 1) == -1 : value >> width == 0;
}

} // namespace

/// The other bits keep the value they have in the device, not one that was read or written before: a bit that the
/// device has cleared since would start its command again. Those of a register that cannot be read become zero.
void CIntRegNode::DoWriteInteger(int64_t value, SWriting how) {
    const SField field = Field();
    if (!Fits(value, field.width))
        throw OUT_OF_RANGE_EXCEPTION("Node '%s': %lld does not fit into %u bits", NameText(),
                                     static_cast<long long>(value), field.width);
    const uint64_t mask = field.Mask() << field.shift;
    const bool readsOthers = !how.isRehearsal && field.width < 8 * field.registerLength && IsRawReadable();
    const uint64_t others = readsOthers ? ReadRaw(field.registerLength, true) & ~mask : 0;
    WriteRaw(others | (static_cast<uint64_t>(value) << field.shift & mask), field.registerLength, how);
}

/// An unsigned field of 64 bits is read as two's complement, but its limits are those of a number without sign, so that
/// converters above it have limits as well.
int64_t CIntRegNode::NaturalIntegerLimit(ELimit limit) const {
    const SField field = Field();
    const bool isUnsignedMinimum = limit == ELimit::Min && !IsSigned();
    if (limit == ELimit::Inc || (field.width == 64 && !isUnsignedMinimum))
        return TInteger::NaturalIntegerLimit(limit);
    const auto highest = static_cast<int64_t>(field.Mask());
    if (!IsSigned())
        return isUnsignedMinimum ? 0 : highest;
    return limit == ELimit::Min ? -(highest / 2) - 1 : highest / 2;
}

} // namespace GenApi
