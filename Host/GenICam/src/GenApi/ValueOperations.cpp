#include "ValueOperations.h"

#include "NodeMapImpl.h"
#include "Text.h"

#include <algorithm>

namespace GenApi {

namespace {

std::string_view TakeListItem(std::string_view &list) {
    const std::size_t end = std::min(list.find(';'), list.size());
    const std::string_view item = Trim(list.substr(0, end));
    list.remove_prefix(std::min(end + 1, list.size()));
    return item;
}

template <class Number, class Parse> std::vector<Number> ParseList(std::string_view list, Parse parse) {
    std::vector<Number> values;
    while (!list.empty())
        if (const std::optional<Number> value = parse(TakeListItem(list)))
            values.push_back(*value);
    return values;
}

template <class Number> void KeepWithin(std::vector<Number> &values, Number minimum, Number maximum) {
    const auto isOutside = [=](Number value) { return value < minimum || value > maximum; };
    values.erase(std::remove_if(values.begin(), values.end(), isOutside), values.end());
}

template <class Number> bool IsListed(const std::vector<Number> &list, Number value) {
    return std::find(list.begin(), list.end(), value) != list.end();
}

void CheckStep(const CNodeImpl &node, int64_t value, int64_t minimum) {
    const int64_t step = node.IntegerLimit(ELimit::Inc);
    const uint64_t distance = static_cast<uint64_t>(value) - static_cast<uint64_t>(minimum);
    if (step > 1 && distance % static_cast<uint64_t>(step) != 0)
        throw OUT_OF_RANGE_EXCEPTION("Node '%s': value %lld is not minimum %lld plus a multiple of the increment %lld",
                                     node.NameText(), static_cast<long long>(value), static_cast<long long>(minimum),
                                     static_cast<long long>(step));
}

} // namespace

void CheckInteger(const CNodeImpl &node, int64_t value) {
    const int64_t minimum = node.IntegerLimit(ELimit::Min);
    const int64_t maximum = node.IntegerLimit(ELimit::Max);
    if (value < minimum || value > maximum)
        throw OUT_OF_RANGE_EXCEPTION("Node '%s': value %lld must be between %lld and %lld", node.NameText(),
                                     static_cast<long long>(value), static_cast<long long>(minimum),
                                     static_cast<long long>(maximum));
    if (!node.Has(EProperty::ValidValueSet))
        return CheckStep(node, value, minimum);
    if (!IsListed(ValidIntegers(node, false), value))
        throw OUT_OF_RANGE_EXCEPTION("Node '%s': value %lld is not in the list of valid values", node.NameText(),
                                     static_cast<long long>(value));
}

void CheckFloat(const CNodeImpl &node, double value) {
    const double minimum = node.FloatLimit(ELimit::Min);
    const double maximum = node.FloatLimit(ELimit::Max);
    if (!(value >= minimum && value <= maximum))
        throw OUT_OF_RANGE_EXCEPTION("Node '%s': value %g must be between %g and %g", node.NameText(), value, minimum,
                                     maximum);
    if (node.Has(EProperty::ValidValueSet) && !IsListed(ValidFloats(node, false), value))
        throw OUT_OF_RANGE_EXCEPTION("Node '%s': value %g is not in the list of valid values", node.NameText(), value);
}

int64_t GetInteger(const CNodeImpl &node, bool verify, bool ignoreCache) {
    const COperation operation(node.Map());
    node.CheckReadable();
    const int64_t value = node.ReadInteger(ignoreCache);
    if (verify)
        CheckInteger(node, value);
    return value;
}

void SetInteger(CNodeImpl &node, int64_t value, bool verify) {
    CUpdate update(node.Map());
    node.CheckWritable();
    node.WriteInteger(value, {verify});
    if (verify)
        node.CheckErrors();
}

int64_t GetIntegerLimit(const CNodeImpl &node, ELimit limit) {
    const COperation operation(node.Map());
    const int64_t value = node.IntegerLimit(limit);
    return limit == ELimit::Inc ? std::max<int64_t>(value, 1) : value;
}

std::vector<int64_t> ValidIntegers(const CNodeImpl &node, bool bounded) {
    const COperation operation(node.Map());
    auto values = ParseList<int64_t>(node.Text(EProperty::ValidValueSet), ParseInteger);
    if (bounded)
        KeepWithin(values, node.IntegerLimit(ELimit::Min), node.IntegerLimit(ELimit::Max));
    return values;
}

double GetFloat(const CNodeImpl &node, bool verify, bool ignoreCache) {
    const COperation operation(node.Map());
    node.CheckReadable();
    const double value = node.ReadFloat(ignoreCache);
    if (verify)
        CheckFloat(node, value);
    return value;
}

void SetFloat(CNodeImpl &node, double value, bool verify) {
    CUpdate update(node.Map());
    node.CheckWritable();
    node.WriteFloat(value, {verify});
    if (verify)
        node.CheckErrors();
}

double GetFloatLimit(const CNodeImpl &node, ELimit limit) {
    const COperation operation(node.Map());
    return node.FloatLimit(limit);
}

std::vector<double> ValidFloats(const CNodeImpl &node, bool bounded) {
    const COperation operation(node.Map());
    auto values = ParseList<double>(node.Text(EProperty::ValidValueSet), ParseFloat);
    if (bounded)
        KeepWithin(values, node.FloatLimit(ELimit::Min), node.FloatLimit(ELimit::Max));
    return values;
}

std::string GetText(const CNodeImpl &node, bool ignoreCache) {
    const COperation operation(node.Map());
    node.CheckReadable();
    return node.ReadText(ignoreCache);
}

void SetText(CNodeImpl &node, const std::string &text, bool verify) {
    CUpdate update(node.Map());
    node.CheckWritable();
    const int64_t longest = verify ? node.MaxTextLength() : std::numeric_limits<int64_t>::max();
    if (static_cast<int64_t>(text.size()) > longest)
        throw OUT_OF_RANGE_EXCEPTION("Node '%s': a text of %zu bytes is longer than the %lld allowed", node.NameText(),
                                     text.size(), static_cast<long long>(longest));
    node.WriteText(text);
    if (verify)
        node.CheckErrors();
}

bool GetIsCached(const CNodeImpl &node) {
    const COperation operation(node.Map());
    return node.IsCached();
}

ERepresentation GetRepresentation(const CNodeImpl &node) {
    const COperation operation(node.Map());
    return node.Representation();
}

void RefuseText(const CNodeImpl &node, const gcstring &text) {
    throw INVALID_ARGUMENT_EXCEPTION("Node '%s': '%s' is no value of this node", node.NameText(), text.c_str());
}

} // namespace GenApi
