#include "FormulaNodes.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace GenApi {

namespace {

CNodeImpl &ConvertedNode(const CNodeImpl &node) {
    const SProperty *const property = node.Find(EProperty::pValue);
    if (property == nullptr)
        throw RUNTIME_EXCEPTION("Node '%s' has no 'pValue'", node.NameText());
    return node.Target(*property);
}

EAccessMode ConverterAccessMode(const CNodeImpl &node, const CFormulaSet &formulas) {
    if (!node.Has(EProperty::pValue))
        return NI;
    return Combine(ConvertedNode(node).AccessMode(), formulas.VariablesAccessMode());
}

/// The limits of a converter are the images of its target's limits; which is which depends on the slope.
template <class Number> class TLimitImages {
public:
    TLimitImages(CFormulaSet &formulas, const Number low, const Number high)
        : m_formulas(formulas), m_low(low), m_high(high) {}

    std::optional<Number> Get(ELimit limit, std::string_view slope) const {
        const bool isMinimum = limit == ELimit::Min;
        if (slope == "Increasing")
            return ImageOf(isMinimum ? m_low : m_high);
        if (slope == "Decreasing")
            return ImageOf(isMinimum ? m_high : m_low);
        if (IsOpen(m_low) != IsOpen(m_high))
            return GetHalfOpen(isMinimum);
        const auto [low, high] = std::minmax({ImageOf(m_low), ImageOf(m_high)});
        return !low || isMinimum ? low : high; // "none" is the lowest
    }

private:
    using Range = std::numeric_limits<int64_t>;

    /// The ends of the 64-bit range say nothing about the device, and formulas overflow there.
    static bool IsOpen(Number limit) {
        return limit <= static_cast<Number>(Range::min()) || limit >= static_cast<Number>(Range::max());
    }

    /// None where the formula has no value.
    std::optional<Number> ImageOf(Number value) const {
        if (IsOpen(value))
            return std::nullopt;
        try {
            const auto image = m_formulas.Evaluate<Number>(EProperty::FormulaFrom, false, value);
            return std::isfinite(static_cast<double>(image)) ? std::optional(image) : std::nullopt;
        } catch (const GenICam::RuntimeException &) {
            return std::nullopt;
        }
    }

    /// The image of the one limit the target has is a minimum or a maximum, as a value on its inner side shows.
    std::optional<Number> GetHalfOpen(bool isMinimum) const {
        constexpr auto step = Number{1u << 31};
        constexpr auto farthest = static_cast<Number>(Range::max() >> 1);
        const auto limit = ImageOf(IsOpen(m_high) ? m_low : m_high);
        const auto inner =
            ImageOf(IsOpen(m_high) ? std::min(m_low, farthest) + step : std::max(m_high, -farthest) - step);
        const bool isKnown = limit && inner && *limit != *inner;
        return isKnown && (*limit < *inner) == isMinimum ? limit : std::nullopt;
    }

    CFormulaSet &m_formulas;
    Number m_low;
    Number m_high;
};

/// The image of a limit of the target is converted back to that limit but for a rounding error, which must not make it
/// count as outside.
double SnapToLimits(const CNodeImpl &target, double value) {
    constexpr double roundingError = 1e-12;
    for (const ELimit which : {ELimit::Min, ELimit::Max}) {
        const double limit = target.FloatLimit(which);
        if (std::abs(value - limit) <= roundingError * std::abs(limit))
            return limit;
    }
    return value;
}

bool HasLimits(const CNodeImpl &node, ELimit limit) {
    return limit != ELimit::Inc && node.Text(EProperty::Slope) != "Varying";
}

} // namespace

int64_t CIntSwissKnifeNode::DoReadInteger(bool ignoreCache) const {
    return m_kept.Get(*this, ignoreCache,
                      [&] { return m_formulas.Evaluate<int64_t>(EProperty::Formula, ignoreCache); });
}

double CSwissKnifeNode::DoReadFloat(bool ignoreCache) const {
    return m_kept.Get(*this, ignoreCache, [&] { return m_formulas.Evaluate<double>(EProperty::Formula, ignoreCache); });
}

EAccessMode CIntConverterNode::OwnAccessMode() const { return ConverterAccessMode(*this, m_formulas); }

int64_t CIntConverterNode::DoReadInteger(bool ignoreCache) const {
    const int64_t target = ConvertedNode(*this).ReadInteger(ignoreCache);
    return m_formulas.Evaluate<int64_t>(EProperty::FormulaFrom, ignoreCache, target);
}

void CIntConverterNode::DoWriteInteger(int64_t value, SWriting how) {
    ConvertedNode(*this).WriteInteger(m_formulas.Evaluate<int64_t>(EProperty::FormulaTo, false, value), how);
}

int64_t CIntConverterNode::NaturalIntegerLimit(ELimit limit) const {
    if (!HasLimits(*this, limit))
        return TInteger::NaturalIntegerLimit(limit);
    const CNodeImpl &target = ConvertedNode(*this);
    const TLimitImages images(m_formulas, target.IntegerLimit(ELimit::Min), target.IntegerLimit(ELimit::Max));
    const auto converted = images.Get(limit, Text(EProperty::Slope));
    return converted ? *converted : TInteger::NaturalIntegerLimit(limit);
}

EAccessMode CConverterNode::OwnAccessMode() const { return ConverterAccessMode(*this, m_formulas); }

double CConverterNode::DoReadFloat(bool ignoreCache) const {
    const double target = ConvertedNode(*this).ReadFloat(ignoreCache);
    return m_formulas.Evaluate<double>(EProperty::FormulaFrom, ignoreCache, target);
}

void CConverterNode::DoWriteFloat(double value, SWriting how) {
    CNodeImpl &target = ConvertedNode(*this);
    const auto converted = m_formulas.Evaluate<double>(EProperty::FormulaTo, false, value);
    target.WriteFloat(how.verify ? SnapToLimits(target, converted) : converted, how);
}

double CConverterNode::NaturalFloatLimit(ELimit limit) const {
    if (!HasLimits(*this, limit))
        return TFloat::NaturalFloatLimit(limit);
    const CNodeImpl &target = ConvertedNode(*this);
    const TLimitImages images(m_formulas, target.FloatLimit(ELimit::Min), target.FloatLimit(ELimit::Max));
    const auto converted = images.Get(limit, Text(EProperty::Slope));
    return converted ? *converted : TFloat::NaturalFloatLimit(limit);
}

} // namespace GenApi
