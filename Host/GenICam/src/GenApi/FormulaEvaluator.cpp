#include "Formula.h"

#include "Base/GCException.h"

#include <cmath>
#include <limits>

namespace GenApi {

namespace {

constexpr double integerLimit = 9223372036854775808.0; // 2^63

struct SProblem {
    const char *text;
};

int64_t ToInteger(double value) {
    if (!(value >= -integerLimit && value < integerLimit))
        throw SProblem{"a value that is no 64-bit integer"};
    return static_cast<int64_t>(value);
}
int64_t ToInteger(int64_t value) { return value; }

unsigned ShiftCount(int64_t count) {
    if (count < 0 || count > 63)
        throw SProblem{"a shift outside 0 to 63"};
    return static_cast<unsigned>(count);
}

int64_t ShiftLeft(int64_t value, int64_t count) {
    return static_cast<int64_t>(static_cast<uint64_t>(value) << ShiftCount(count));
}

/// Integer arithmetic wraps around, as the registers behind it do.
int64_t Add(int64_t a, int64_t b) { return static_cast<int64_t>(static_cast<uint64_t>(a) + static_cast<uint64_t>(b)); }
int64_t Subtract(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) - static_cast<uint64_t>(b));
}
int64_t Multiply(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) * static_cast<uint64_t>(b));
}
double Add(double a, double b) { return a + b; }
double Subtract(double a, double b) { return a - b; }
double Multiply(double a, double b) { return a * b; }

int64_t Divide(int64_t a, int64_t b) {
    if (b == 0)
        throw SProblem{"division by zero"};
    if (b == -1 && a == std::numeric_limits<int64_t>::min())
        throw SProblem{"overflow in a division"};
    return a / b;
}
double Divide(double a, double b) {
    if (b == 0)
        throw SProblem{"division by zero"};
    return a / b;
}

int64_t Remainder(int64_t a, int64_t b) {
    if (b == 0)
        throw SProblem{"division by zero"};
    return b == -1 ? 0 : a % b;
}
double Remainder(double a, double b) {
    if (b == 0)
        throw SProblem{"division by zero"};
    return std::fmod(a, b);
}

int64_t Power(int64_t base, int64_t exponent) {
    if (exponent < 0) {
        if (base == 0)
            throw SProblem{"division by zero"};
        if (base == 1 || base == -1)
            return exponent % 2 == 0 ? 1 : base;
        return 0;
    }
    int64_t result = 1;
    for (; exponent > 0; exponent >>= 1) {
        if ((exponent & 1) != 0)
            result = Multiply(result, base);
        base = Multiply(base, base);
    }
    return result;
}
double Power(double base, double exponent) { return std::pow(base, exponent); }

double RoundTo(double value, double digits) {
    const double factor = std::pow(10.0, digits);
    const double scaled = value * factor;
    // Numbers too large or too small for the scale have no such digits to round.
    return std::isfinite(scaled) && factor > 0 ? std::round(scaled) / factor : value;
}

double ApplyReal(EFormulaOp op, double x) {
    switch (op) {
    case EFormulaOp::Trunc:
        return std::trunc(x);
    case EFormulaOp::Floor:
        return std::floor(x);
    case EFormulaOp::Ceil:
        return std::ceil(x);
    case EFormulaOp::Round:
        return std::round(x);
    case EFormulaOp::Sqrt:
        return std::sqrt(x);
    case EFormulaOp::Exp:
        return std::exp(x);
    case EFormulaOp::Ln:
        return std::log(x);
    case EFormulaOp::Lg:
        return std::log10(x);
    case EFormulaOp::Sin:
        return std::sin(x);
    case EFormulaOp::Cos:
        return std::cos(x);
    case EFormulaOp::Tan:
        return std::tan(x);
    case EFormulaOp::Asin:
        return std::asin(x);
    case EFormulaOp::Acos:
        return std::acos(x);
    default:
        return std::atan(x);
    }
}

bool IsRounding(EFormulaOp op) {
    return op == EFormulaOp::Trunc || op == EFormulaOp::Floor || op == EFormulaOp::Ceil || op == EFormulaOp::Round;
}

int64_t ApplyFunction(EFormulaOp op, int64_t x) {
    return IsRounding(op) ? x : ToInteger(ApplyReal(op, static_cast<double>(x)));
}
double ApplyFunction(EFormulaOp op, double x) { return ApplyReal(op, x); }

int64_t ApplyRoundTo(int64_t value, int64_t digits) {
    return digits >= 0 ? value : ToInteger(RoundTo(static_cast<double>(value), static_cast<double>(digits)));
}
double ApplyRoundTo(double value, double digits) { return RoundTo(value, digits); }

template <class Number> Number ApplyUnary(EFormulaOp op, Number x) {
    switch (op) {
    case EFormulaOp::Negate:
        return Subtract(Number{0}, x);
    case EFormulaOp::Complement:
        return static_cast<Number>(~ToInteger(x));
    case EFormulaOp::Not:
        return x == 0 ? 1 : 0;
    case EFormulaOp::ToBool:
        return x != 0 ? 1 : 0;
    case EFormulaOp::Sgn:
        return static_cast<Number>((x > 0) - (x < 0));
    case EFormulaOp::Abs:
        return x < 0 ? Subtract(Number{0}, x) : x;
    default:
        return ApplyFunction(op, x);
    }
}

template <class Number> Number ApplyBitwise(EFormulaOp op, Number x, Number y) {
    const int64_t a = ToInteger(x);
    const int64_t b = ToInteger(y);
    switch (op) {
    case EFormulaOp::BitOr:
        return static_cast<Number>(a | b);
    case EFormulaOp::BitXor:
        return static_cast<Number>(a ^ b);
    case EFormulaOp::BitAnd:
        return static_cast<Number>(a & b);
    case EFormulaOp::ShiftLeft:
        return static_cast<Number>(ShiftLeft(a, b));
    default:
        return static_cast<Number>(a >> ShiftCount(b));
    }
}

template <class Number> bool Compare(EFormulaOp op, Number a, Number b) {
    switch (op) {
    case EFormulaOp::Equal:
        return a == b;
    case EFormulaOp::NotEqual:
        return a != b;
    case EFormulaOp::Less:
        return a < b;
    case EFormulaOp::LessEqual:
        return a <= b;
    case EFormulaOp::Greater:
        return a > b;
    default:
        return a >= b;
    }
}

template <class Number> Number ApplyBinary(EFormulaOp op, Number a, Number b) {
    switch (op) {
    case EFormulaOp::BitOr:
    case EFormulaOp::BitXor:
    case EFormulaOp::BitAnd:
    case EFormulaOp::ShiftLeft:
    case EFormulaOp::ShiftRight:
        return ApplyBitwise(op, a, b);
    case EFormulaOp::Add:
        return Add(a, b);
    case EFormulaOp::Subtract:
        return Subtract(a, b);
    case EFormulaOp::Multiply:
        return Multiply(a, b);
    case EFormulaOp::Divide:
        return Divide(a, b);
    case EFormulaOp::Remainder:
        return Remainder(a, b);
    case EFormulaOp::Power:
        return Power(a, b);
    case EFormulaOp::RoundTo:
        return ApplyRoundTo(a, b);
    default:
        return Compare(op, a, b) ? 1 : 0;
    }
}

bool IsBinary(EFormulaOp op) {
    return (op >= EFormulaOp::BitOr && op <= EFormulaOp::Power) || op == EFormulaOp::RoundTo;
}

int64_t ConstantOf(const SFormulaConstant &constant, int64_t /*kind*/) { return constant.integer; }
double ConstantOf(const SFormulaConstant &constant, double /*kind*/) { return constant.real; }

template <class Number> class CFormulaMachine {
public:
    CFormulaMachine(const SFormula &formula, IFormulaVariables<Number> &variables)
        : m_formula(formula), m_variables(variables) {}

    Number Run() {
        for (std::size_t at = 0; at < m_formula.code.size();)
            at = Step(m_formula.code[at], at + 1);
        return m_stack.back();
    }

private:
    /// \returns the next instruction.
    std::size_t Step(const SFormulaInstruction &instruction, std::size_t next) {
        switch (instruction.op) {
        case EFormulaOp::Constant:
            m_stack.push_back(ConstantOf(m_formula.constants[instruction.operand], Number{}));
            return next;
        case EFormulaOp::Variable:
            m_stack.push_back(m_variables.Get(instruction.operand));
            return next;
        case EFormulaOp::Jump:
            return instruction.operand;
        case EFormulaOp::JumpIfZero:
            return Pop() == 0 ? instruction.operand : next;
        case EFormulaOp::And:
        case EFormulaOp::Or:
            return Decide(instruction, next);
        default:
            Apply(instruction.op);
            return next;
        }
    }

    std::size_t Decide(const SFormulaInstruction &instruction, std::size_t next) {
        const bool isOr = instruction.op == EFormulaOp::Or;
        if ((Pop() != 0) != isOr)
            return next;
        m_stack.push_back(isOr ? 1 : 0);
        return instruction.operand;
    }

    void Apply(EFormulaOp op) {
        const Number last = Pop();
        if (IsBinary(op))
            m_stack.back() = ApplyBinary(op, m_stack.back(), last);
        else
            m_stack.push_back(ApplyUnary(op, last));
    }

    Number Pop() {
        const Number top = m_stack.back();
        m_stack.pop_back();
        return top;
    }

    const SFormula &m_formula;
    IFormulaVariables<Number> &m_variables;
    std::vector<Number> m_stack;
};

} // namespace

template <class Number> Number EvaluateFormula(const SFormula &formula, IFormulaVariables<Number> &variables) {
    try {
        return CFormulaMachine<Number>(formula, variables).Run();
    } catch (const SProblem &problem) {
        throw RUNTIME_EXCEPTION("Node '%s': %s in formula '%s'", formula.owner.c_str(), problem.text,
                                formula.text.c_str());
    }
}

template int64_t EvaluateFormula(const SFormula &, IFormulaVariables<int64_t> &);
template double EvaluateFormula(const SFormula &, IFormulaVariables<double> &);

} // namespace GenApi
