#include "NodeImpl.h"

#include "EnumText.h"
#include "NodeMapImpl.h"
#include "Text.h"
#include "ValueOperations.h"

#include <cmath>
#include <limits>

// How a node's access mode, value and limits are found, with the map's lock held.

namespace GenApi {

namespace {

EEvaluated EvaluatedLimit(ELimit limit) {
    switch (limit) {
    case ELimit::Min:
        return EEvaluated::Minimum;
    case ELimit::Max:
        return EEvaluated::Maximum;
    default:
        return EEvaluated::Increment;
    }
}

struct SLimitProperties {
    EProperty literal;
    EProperty reference;
};

SLimitProperties PropertiesOf(ELimit limit) {
    switch (limit) {
    case ELimit::Min:
        return {EProperty::Min, EProperty::pMin};
    case ELimit::Max:
        return {EProperty::Max, EProperty::pMax};
    default:
        return {EProperty::Inc, EProperty::pInc};
    }
}

} // namespace

/// A node that is asked for its mode while that is being worked out adds no restriction: conditions of real cameras
/// refer to each other.
EAccessMode CNodeImpl::AccessMode() const {
    if (IsEvaluating(EEvaluated::Access))
        return RW;
    const SEvaluation &evaluation = m_map.Evaluation();
    if (evaluation.IsUnderWay() && m_accessModeEpoch == evaluation.epoch)
        return m_knownAccessMode;
    const CEvaluationScope scope(*this, EEvaluated::Access);
    m_knownAccessMode = DetermineAccessMode();
    m_accessModeEpoch = evaluation.epoch;
    return m_knownAccessMode;
}

EAccessMode CNodeImpl::DetermineAccessMode() const {
    if (m_description.isBroken)
        return NI;
    EAccessMode mode = Combine(OwnAccessMode(), m_imposedAccessMode);
    if (const SProperty *const imposed = Find(EProperty::ImposedAccessMode))
        mode = Combine(mode, ParseAccessMode(imposed->Text()));
    if (mode == NI || !Condition(EProperty::pIsImplemented, true, false))
        return NI;
    if (mode == NA || !Condition(EProperty::pIsAvailable, true, false))
        return NA;
    const bool isLocked = IsWritable(mode) && Condition(EProperty::pIsLocked, false, true);
    return isLocked ? Combine(mode, RO) : mode;
}

bool CNodeImpl::Condition(EProperty id, bool absent, bool unreadable) const {
    const SProperty *const property = Find(id);
    if (property == nullptr)
        return absent;
    const CNodeImpl &condition = Target(*property);
    return IsReadable(condition.AccessMode()) ? condition.ReadInteger(false) != 0 : unreadable;
}

bool CNodeImpl::IsPollingBlocked() const {
    try {
        return Condition(EProperty::pBlockPolling, false, false);
    } catch (const GenICam::GenericException &) {
        return false;
    }
}

void CNodeImpl::Polled() { m_map.Invalidated(*this); }

EAccessMode CNodeImpl::SourceAccessMode(const SProperty &property) const {
    const EAccessMode mode = Target(property).AccessMode();
    return IsReadable(mode) ? RW : mode == NI ? NI : NA;
}

void CNodeImpl::CheckReferences() const {
    for (const SProperty &property : *this) {
        const ERelation relation = RelationOf(property.id);
        if (relation != ERelation::None && relation != ERelation::Link && relation != ERelation::Select &&
            relation != ERelation::Invalidate)
            Target(property);
    }
}

void CNodeImpl::CheckReadable() const {
    const EAccessMode mode = AccessMode();
    if (IsReadable(mode))
        return;
    CheckReferences();
    throw ACCESS_EXCEPTION("Node '%s' is not readable. (Access mode %s)", NameText(), AccessModeText(mode));
}

void CNodeImpl::CheckWritable() const {
    const EAccessMode mode = AccessMode();
    if (IsWritable(mode))
        return;
    CheckReferences();
    throw ACCESS_EXCEPTION("Node '%s' is not writable. (Access mode %s)", NameText(), AccessModeText(mode));
}

int64_t CNodeImpl::ReadInteger(bool ignoreCache) const {
    const CEvaluationScope scope(*this, EEvaluated::Value);
    return DoReadInteger(ignoreCache);
}

double CNodeImpl::ReadFloat(bool ignoreCache) const {
    const CEvaluationScope scope(*this, EEvaluated::Value);
    return DoReadFloat(ignoreCache);
}

std::string CNodeImpl::ReadText(bool ignoreCache) const {
    const CEvaluationScope scope(*this, EEvaluated::Value);
    return DoReadText(ignoreCache);
}

/// Each node checks and writes its own kind of number: a double that is an integer node's maximum but for a rounding
/// error is within its limits.
void CNodeImpl::WriteInteger(int64_t value, SWriting how) {
    if (IsReal())
        return WriteFloat(static_cast<double>(value), how);
    const CEvaluationScope scope(*this, EEvaluated::Write);
    if (how.verify)
        VerifyInteger(value);
    DoWriteInteger(value, how);
}

void CNodeImpl::WriteFloat(double value, SWriting how) {
    if (!IsReal())
        return WriteInteger(IntegerFor(value), how);
    const CEvaluationScope scope(*this, EEvaluated::Write);
    if (how.verify)
        CheckFloat(*this, value);
    DoWriteFloat(value, how);
}

void CNodeImpl::VerifyInteger(int64_t value) const { CheckInteger(*this, value); }

void CNodeImpl::WriteText(const std::string &text) {
    const CEvaluationScope scope(*this, EEvaluated::Write);
    DoWriteText(text);
}

int64_t CNodeImpl::IntegerLimit(ELimit limit) const {
    const CEvaluationScope scope(*this, EvaluatedLimit(limit));
    return DoIntegerLimit(limit);
}

double CNodeImpl::FloatLimit(ELimit limit) const {
    const CEvaluationScope scope(*this, EvaluatedLimit(limit));
    return DoFloatLimit(limit);
}

int64_t CNodeImpl::MaxTextLength() const {
    const CEvaluationScope scope(*this, EEvaluated::TextLength);
    return DoMaxTextLength();
}

void CNodeImpl::CheckErrors() const {
    for (const SProperty &property : *this) {
        if (property.id != EProperty::pError)
            continue;
        const CNodeImpl &error = Target(property);
        if (IsReadable(error.AccessMode()) && error.ReadInteger(true) != 0)
            throw RUNTIME_EXCEPTION("Node '%s': the device reports error %lld in '%s'", NameText(),
                                    static_cast<long long>(error.ReadInteger(false)), error.NameText());
    }
}

ECachingMode CNodeImpl::CachingMode() const {
    const CEvaluationScope scope(*this, EEvaluated::CachingMode);
    return DoCachingMode();
}

bool CNodeImpl::IsCached() const {
    const CEvaluationScope scope(*this, EEvaluated::IsCached);
    return DoIsCached();
}

ERepresentation CNodeImpl::Representation() const {
    const CEvaluationScope scope(*this, EEvaluated::Representation);
    const SProperty *const given = Find(EProperty::Representation);
    return given != nullptr ? ParseRepresentation(given->Text()) : NaturalRepresentation();
}

int64_t CNodeImpl::DoReadInteger(bool) const { throw RUNTIME_EXCEPTION("Node '%s' has no numeric value", NameText()); }

double CNodeImpl::DoReadFloat(bool ignoreCache) const { return static_cast<double>(DoReadInteger(ignoreCache)); }

std::string CNodeImpl::DoReadText(bool) const { throw RUNTIME_EXCEPTION("Node '%s' has no text value", NameText()); }

void CNodeImpl::DoWriteInteger(int64_t, SWriting) {
    throw RUNTIME_EXCEPTION("Node '%s' takes no numeric value", NameText());
}

void CNodeImpl::DoWriteFloat(double, SWriting) { throw RUNTIME_EXCEPTION("Node '%s' takes no value", NameText()); }

void CNodeImpl::DoWriteText(const std::string &) {
    throw RUNTIME_EXCEPTION("Node '%s' takes no text value", NameText());
}

int64_t CNodeImpl::DoIntegerLimit(ELimit limit) const {
    const auto [literal, reference] = PropertiesOf(limit);
    if (limit == ELimit::Max)
        if (const auto maximum = ParseMaximum(Text(EProperty::Max)))
            return *maximum;
    const auto given = IsLimitKnown(limit) ? IntegerProperty(literal, reference) : std::nullopt;
    return given ? *given : NaturalIntegerLimit(limit);
}

double CNodeImpl::DoFloatLimit(ELimit limit) const { return static_cast<double>(DoIntegerLimit(limit)); }

bool CNodeImpl::IsLimitKnown(ELimit limit) const {
    const auto [literal, reference] = PropertiesOf(limit);
    const SProperty *const property = Has(literal) ? nullptr : Find(reference);
    return property == nullptr || IsReadable(Target(*property).AccessMode());
}

std::optional<double> CNodeImpl::GivenFloatLimit(ELimit limit) const {
    const auto [literal, reference] = PropertiesOf(limit);
    return IsLimitKnown(limit) ? FloatProperty(literal, reference) : std::nullopt;
}

int64_t CNodeImpl::NaturalIntegerLimit(ELimit limit) const {
    switch (limit) {
    case ELimit::Min:
        return std::numeric_limits<int64_t>::min();
    case ELimit::Max:
        return std::numeric_limits<int64_t>::max();
    default:
        return 1;
    }
}

int64_t CNodeImpl::DoMaxTextLength() const { return std::numeric_limits<int64_t>::max(); }

int64_t CNodeImpl::RoundToInteger(double value) const {
    constexpr double limit = 9223372036854775808.0; // 2^63
    const double rounded = std::round(value);
    if (!(rounded >= -limit && rounded < limit))
        throw OUT_OF_RANGE_EXCEPTION("Node '%s': %g is no 64-bit integer", NameText(), value);
    return static_cast<int64_t>(rounded);
}

} // namespace GenApi
