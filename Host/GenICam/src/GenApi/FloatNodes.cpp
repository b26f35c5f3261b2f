#include "FloatNodes.h"

#include <cstring>

namespace GenApi {

namespace {

template <class To, class From> To BitCast(From from) {
    static_assert(sizeof(To) == sizeof(From));
    To to;
    std::memcpy(&to, &from, sizeof to);
    return to;
}

} // namespace

bool CFloatNode::HasIncrement() const {
    if (TFloat::HasIncrement())
        return true;
    const AutoLock lock(Map().GetLock());
    const CEvaluationScope scope(*this, EEvaluated::Increment);
    const CNodeImpl *const target = m_source.Target();
    return target != nullptr && target->HasIncrement();
}

double CFloatNode::NaturalFloatLimit(ELimit limit) const {
    const CNodeImpl *const target = m_source.Target();
    return target != nullptr ? target->FloatLimit(limit) : TFloat::NaturalFloatLimit(limit);
}

bool CFloatRegNode::IsSingle() const {
    const std::size_t length = Length();
    if (length != sizeof(float) && length != sizeof(double))
        throw RUNTIME_EXCEPTION("Node '%s': a float register has 4 or 8 bytes, not %zu", NameText(), length);
    return length == sizeof(float);
}

double CFloatRegNode::DoReadFloat(bool ignoreCache) const {
    if (IsSingle())
        return static_cast<double>(BitCast<float>(static_cast<uint32_t>(ReadRaw(sizeof(float), ignoreCache))));
    return BitCast<double>(ReadRaw(sizeof(double), ignoreCache));
}

void CFloatRegNode::DoWriteFloat(double value, SWriting how) {
    if (IsSingle())
        WriteRaw(BitCast<uint32_t>(static_cast<float>(value)), sizeof(float), how);
    else
        WriteRaw(BitCast<uint64_t>(value), sizeof(double), how);
}

double CFloatRegNode::NaturalFloatLimit(ELimit limit) const {
    const double largest =
        IsSingle() ? static_cast<double>(std::numeric_limits<float>::max()) : std::numeric_limits<double>::max();
    return limit == ELimit::Min ? -largest : largest;
}

} // namespace GenApi
