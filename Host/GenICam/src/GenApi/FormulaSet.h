#pragma once

#include "Formula.h"
#include "NodeImpl.h"

#include <map>
#include <unordered_map>

namespace GenApi {

/// The formulas of one node together with what their names stand for. A formula is compiled when it is first needed, so
/// that a faulty one fails only its node. Used with the map's lock held.
class CFormulaSet {
public:
    CFormulaSet(const CNodeImpl &node, EFormulaKind kind) : m_node(node), m_kind(kind) {}

    /// Evaluates the node's first formula of that kind. \p Number matches the kind of the set.
    /// \param input what FROM and TO stand for.
    template <class Number> Number Evaluate(EProperty formula, bool ignoreCache, Number input = {});

    /// RW when all variables can be read, else NI or NA.
    EAccessMode VariablesAccessMode() const;
    /// NoCache when one of the nodes the formulas use must not be cached.
    ECachingMode CachingMode() const;
    bool IsCached() const;

private:
    class CEvaluation;

    enum class EMeaning : uint8_t { Value, Min, Max, Inc, Entry, Constant, Expression, Input };

    struct SBinding {
        EMeaning meaning;
        /// The pVariable, Constant or Expression; null for FROM, TO, PI and E.
        const SProperty *property;
        std::string_view entry;
        double constant;
    };

    struct SBoundFormula {
        SFormula formula;
        /// For each variable of the formula its index in m_bindings.
        std::vector<std::size_t> bindings;
    };

    const SBoundFormula &Compiled(const SProperty &formula);
    std::size_t Bind(const SFormula &formula, const std::string &name);
    SBinding Resolve(const SFormula &formula, std::string_view name) const;
    const SProperty *FindNamed(std::string_view name) const;
    static SBinding WithSuffix(const SProperty &variable, std::string_view suffix);
    static SBinding BindingOf(const SProperty &property);

    const CNodeImpl &m_node;
    EFormulaKind m_kind;
    std::vector<SBinding> m_bindings;
    std::unordered_map<std::string, std::size_t> m_names;
    std::map<const SProperty *, SBoundFormula> m_formulas;
};

extern template int64_t CFormulaSet::Evaluate(EProperty, bool, int64_t);
extern template double CFormulaSet::Evaluate(EProperty, bool, double);

} // namespace GenApi
