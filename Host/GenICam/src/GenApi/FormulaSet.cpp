#include "FormulaSet.h"

#include "EnumerationNode.h"

namespace GenApi {

namespace {

constexpr unsigned maxExpressionDepth = 50;
constexpr std::string_view entrySuffix = "Entry.";

} // namespace

/// One evaluation: each name is looked up at most once, whatever the number of its uses.
class CFormulaSet::CEvaluation {
public:
    CEvaluation(CFormulaSet &set, bool ignoreCache, FormulaNumber input)
        : m_set(set), m_ignoreCache(ignoreCache), m_input(input) {}

    FormulaNumber Run(const SBoundFormula &bound) {
        CVariables variables(*this, bound);
        return EvaluateFormula(bound.formula, variables);
    }

private:
    class CVariables : public IFormulaVariables {
    public:
        CVariables(CEvaluation &evaluation, const SBoundFormula &bound) : m_evaluation(evaluation), m_bound(bound) {}
        FormulaNumber Get(std::size_t variable) override { return m_evaluation.ValueOf(m_bound.bindings[variable]); }

    private:
        CEvaluation &m_evaluation;
        const SBoundFormula &m_bound;
    };

    FormulaNumber ValueOf(std::size_t index) {
        // Compiling an expression may have added bindings.
        m_known.resize(m_set.m_bindings.size());
        if (!m_known[index]) {
            const FormulaNumber value = Find(m_set.m_bindings[index]);
            m_known.resize(m_set.m_bindings.size());
            m_known[index] = value;
        }
        return *m_known[index];
    }

    FormulaNumber Find(const SBinding binding) {
        switch (binding.meaning) {
        case EMeaning::Input:
            return m_input;
        case EMeaning::Constant:
            return binding.property != nullptr ? Literal(*binding.property) : binding.constant;
        case EMeaning::Expression:
            return RunExpression(*binding.property);
        default:
            return FromNode(binding, m_set.m_node.Target(*binding.property));
        }
    }

    FormulaNumber FromNode(const SBinding &binding, const CNodeImpl &node) {
        switch (binding.meaning) {
        case EMeaning::Min:
            return Limit(node, ELimit::Min);
        case EMeaning::Max:
            return Limit(node, ELimit::Max);
        case EMeaning::Inc:
            return Limit(node, ELimit::Inc);
        case EMeaning::Entry:
            return EntryValue(node, binding.entry);
        default:
            return Value(node);
        }
    }

    bool IsInteger() const { return m_set.m_kind == EFormulaKind::Integer; }
    FormulaNumber Value(const CNodeImpl &node) const {
        return IsInteger() ? FormulaNumber(node.ReadInteger(m_ignoreCache)) : node.ReadFloat(m_ignoreCache);
    }
    FormulaNumber Limit(const CNodeImpl &node, ELimit limit) const {
        return IsInteger() ? FormulaNumber(node.IntegerLimit(limit)) : node.FloatLimit(limit);
    }
    FormulaNumber Literal(const SProperty &constant) const {
        const auto number = ParseFormulaNumber(constant.Text(), m_set.m_kind);
        return number ? *number : m_set.m_node.FloatOf(constant); // which throws
    }

    FormulaNumber RunExpression(const SProperty &property) {
        if (++m_depth > maxExpressionDepth)
            throw RUNTIME_EXCEPTION("Node '%s': expression '%.*s' depends on itself or is nested too deeply",
                                    m_set.m_node.NameText(), static_cast<int>(property.Attribute().size()),
                                    property.Attribute().data());
        const FormulaNumber value = Run(m_set.Compiled(property));
        --m_depth;
        return value;
    }

    /// What the enumeration itself would be read as if this were its present entry.
    FormulaNumber EntryValue(const CNodeImpl &node, std::string_view entryName) const {
        const auto *const enumeration = dynamic_cast<const CEnumerationNode *>(&node);
        const CEnumEntryNode *const entry = enumeration != nullptr ? enumeration->EntryNamed(entryName) : nullptr;
        if (entry == nullptr)
            throw RUNTIME_EXCEPTION("Node '%s': node '%s' has no entry '%.*s'", m_set.m_node.NameText(),
                                    node.NameText(), static_cast<int>(entryName.size()), entryName.data());
        return IsInteger() ? FormulaNumber(entry->Value()) : entry->NumericValue();
    }

    CFormulaSet &m_set;
    bool m_ignoreCache;
    FormulaNumber m_input;
    std::vector<std::optional<FormulaNumber>> m_known;
    unsigned m_depth = 0;
};

template <class Number> Number CFormulaSet::Evaluate(EProperty formula, bool ignoreCache, Number input) {
    const SProperty *const property = m_node.Find(formula);
    if (property == nullptr)
        throw RUNTIME_EXCEPTION("Node '%s' has no '%s'", m_node.NameText(), NameOf(formula).data());
    const SBoundFormula &bound = Compiled(*property);
    const FormulaNumber result = CEvaluation(*this, ignoreCache, input).Run(bound);
    if constexpr (std::is_same_v<Number, double>)
        return ToReal(result);
    else
        return ToInteger(result, bound.formula);
}

template int64_t CFormulaSet::Evaluate(EProperty, bool, int64_t);
template double CFormulaSet::Evaluate(EProperty, bool, double);

const CFormulaSet::SBoundFormula &CFormulaSet::Compiled(const SProperty &formula) {
    const auto known = m_formulas.find(&formula);
    if (known != m_formulas.end())
        return known->second;
    SBoundFormula bound;
    bound.formula = CompileFormula(formula.text, m_kind, m_node.Name());
    for (const std::string &name : bound.formula.variables)
        bound.bindings.push_back(Bind(bound.formula, name));
    return m_formulas.emplace(&formula, std::move(bound)).first->second;
}

std::size_t CFormulaSet::Bind(const SFormula &formula, const std::string &name) {
    const auto known = m_names.find(name);
    if (known != m_names.end())
        return known->second;
    m_bindings.push_back(Resolve(formula, name));
    m_names.emplace(name, m_bindings.size() - 1);
    return m_bindings.size() - 1;
}

CFormulaSet::SBinding CFormulaSet::Resolve(const SFormula &formula, std::string_view name) const {
    if (const SProperty *const property = FindNamed(name))
        return BindingOf(*property);
    const bool isConverter = m_node.Type() == ENodeType::Converter || m_node.Type() == ENodeType::IntConverter;
    if (isConverter && (name == "FROM" || name == "TO"))
        return {EMeaning::Input, nullptr, {}, 0};
    const std::size_t dot = name.find('.');
    const SProperty *const variable = dot != std::string_view::npos ? FindNamed(name.substr(0, dot)) : nullptr;
    if (variable != nullptr && variable->id == EProperty::pVariable)
        return WithSuffix(*variable, name.substr(dot + 1));
    double constant = 0;
    if (!IsFormulaConstant(name, constant))
        throw RUNTIME_EXCEPTION("Node '%s': unknown name '%.*s' in formula '%s'", formula.owner.c_str(),
                                static_cast<int>(name.size()), name.data(), formula.text.c_str());
    return {EMeaning::Constant, nullptr, {}, constant};
}

const SProperty *CFormulaSet::FindNamed(std::string_view name) const {
    for (const SProperty &property : m_node)
        if ((property.id == EProperty::pVariable || property.id == EProperty::Constant ||
             property.id == EProperty::Expression) &&
            property.Attribute() == name)
            return &property;
    return nullptr;
}

/// The name of a variable may itself end in a suffix: `<pVariable Name="GAIN.Max">Gain</pVariable>`.
CFormulaSet::SBinding CFormulaSet::BindingOf(const SProperty &property) {
    if (property.id == EProperty::Constant)
        return {EMeaning::Constant, &property, {}, 0};
    if (property.id == EProperty::Expression)
        return {EMeaning::Expression, &property, {}, 0};
    const std::size_t dot = property.Attribute().find('.');
    return WithSuffix(property, dot != std::string_view::npos ? property.Attribute().substr(dot + 1) : "Value");
}

CFormulaSet::SBinding CFormulaSet::WithSuffix(const SProperty &variable, std::string_view suffix) {
    if (suffix == "Min")
        return {EMeaning::Min, &variable, {}, 0};
    if (suffix == "Max")
        return {EMeaning::Max, &variable, {}, 0};
    if (suffix == "Inc")
        return {EMeaning::Inc, &variable, {}, 0};
    if (suffix.substr(0, entrySuffix.size()) == entrySuffix)
        return {EMeaning::Entry, &variable, suffix.substr(entrySuffix.size()), 0};
    return {EMeaning::Value, &variable, {}, 0};
}

EAccessMode CFormulaSet::VariablesAccessMode() const {
    EAccessMode mode = RW;
    for (const SProperty &property : m_node)
        if (property.id == EProperty::pVariable && BindingOf(property).meaning == EMeaning::Value)
            mode = Combine(mode, m_node.SourceAccessMode(property));
    return mode;
}

ECachingMode CFormulaSet::CachingMode() const {
    for (const SProperty &property : m_node)
        if ((property.id == EProperty::pVariable || property.id == EProperty::pValue) &&
            m_node.Target(property).CachingMode() == NoCache)
            return NoCache;
    return WriteThrough;
}

bool CFormulaSet::IsCached() const {
    for (const SProperty &property : m_node)
        if ((property.id == EProperty::pVariable || property.id == EProperty::pValue) &&
            !m_node.Target(property).IsCached())
            return false;
    return true;
}

} // namespace GenApi
