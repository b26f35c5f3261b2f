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

/// The number that a converter shows at a limit of its target. None where the formula has no value, nor at the ends of
/// the 64-bit range: they say nothing about the device, and formulas overflow there.
template <class Number> std::optional<Number> ImageOf(CFormulaSet &formulas, Number targetLimit) {
    using Range = std::numeric_limits<int64_t>;
    if (targetLimit <= static_cast<Number>(Range::min()) || targetLimit >= static_cast<Number>(Range::max()))
        return std::nullopt;
    try {
        const auto image = formulas.Evaluate<Number>(EProperty::FormulaFrom, false, targetLimit);
        return std::isfinite(static_cast<double>(image)) ? std::optional(image) : std::nullopt;
    } catch (const GenICam::RuntimeException &) {
        return std::nullopt;
    }
}

/// A limit of a converter is the image of a limit of its target; which one depends on the slope.
template <class Image> auto ChooseLimit(const CNodeImpl &node, ELimit limit, Image image) -> decltype(image(limit)) {
    const std::string_view slope = node.Text(EProperty::Slope);
    const bool isMinimum = limit == ELimit::Min;
    if (slope == "Increasing")
        return image(limit);
    if (slope == "Decreasing")
        return image(isMinimum ? ELimit::Max : ELimit::Min);
    const auto [low, high] = std::minmax({image(ELimit::Min), image(ELimit::Max)});
    return !low || isMinimum ? low : high; // "none" is the lowest
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

void CSwissKnifeNode::DoWriteFloat(double) { throw RUNTIME_EXCEPTION("Node '%s' takes no value", NameText()); }

EAccessMode CIntConverterNode::OwnAccessMode() const { return ConverterAccessMode(*this, m_formulas); }

int64_t CIntConverterNode::DoReadInteger(bool ignoreCache) const {
    const int64_t target = ConvertedNode(*this).ReadInteger(ignoreCache);
    return m_formulas.Evaluate<int64_t>(EProperty::FormulaFrom, ignoreCache, target);
}

void CIntConverterNode::DoWriteInteger(int64_t value) {
    ConvertedNode(*this).WriteInteger(m_formulas.Evaluate<int64_t>(EProperty::FormulaTo, false, value));
}

int64_t CIntConverterNode::NaturalIntegerLimit(ELimit limit) const {
    if (!HasLimits(*this, limit))
        return TInteger::NaturalIntegerLimit(limit);
    const CNodeImpl &target = ConvertedNode(*this);
    const auto image = [&](ELimit of) { return ImageOf(m_formulas, target.IntegerLimit(of)); };
    const auto converted = ChooseLimit(*this, limit, image);
    return converted ? *converted : TInteger::NaturalIntegerLimit(limit);
}

EAccessMode CConverterNode::OwnAccessMode() const { return ConverterAccessMode(*this, m_formulas); }

double CConverterNode::DoReadFloat(bool ignoreCache) const {
    const double target = ConvertedNode(*this).ReadFloat(ignoreCache);
    return m_formulas.Evaluate<double>(EProperty::FormulaFrom, ignoreCache, target);
}

void CConverterNode::DoWriteFloat(double value) {
    ConvertedNode(*this).WriteFloat(m_formulas.Evaluate<double>(EProperty::FormulaTo, false, value));
}

double CConverterNode::NaturalFloatLimit(ELimit limit) const {
    if (!HasLimits(*this, limit))
        return TFloat::NaturalFloatLimit(limit);
    const CNodeImpl &target = ConvertedNode(*this);
    const auto image = [&](ELimit of) { return ImageOf(m_formulas, target.FloatLimit(of)); };
    const auto converted = ChooseLimit(*this, limit, image);
    return converted ? *converted : TFloat::NaturalFloatLimit(limit);
}

} // namespace GenApi
