#include "Formula.h"

#include "Base/GCException.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace GenApi {

namespace {

constexpr double integerLimit = 9223372036854775808.0; // 2^63

struct SProblem {
    const char *text;
};

bool IsInteger(double value) { return value >= -integerLimit && value < integerLimit; }

int64_t ToInteger(FormulaNumber number) {
    if (const int64_t *const integer = std::get_if<int64_t>(&number))
        return *integer;
    const double real = std::get<double>(number);
    if (!IsInteger(real))
        throw SProblem{"a value that is no 64-bit integer"};
    return static_cast<int64_t>(real);
}

int64_t CheckedShift(int64_t count) {
    if (count < 0)
        throw SProblem{"a shift by a negative number"};
    return count;
}

int64_t ShiftLeft(int64_t value, int64_t count) {
    return CheckedShift(count) > 63 ? 0 : static_cast<int64_t>(static_cast<uint64_t>(value) << count);
}

int64_t ShiftRight(int64_t value, int64_t count) { return value >> std::min<int64_t>(CheckedShift(count), 63); }

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
double Divide(double a, double b) { return a / b; }

int64_t Remainder(int64_t a, int64_t b) {
    if (b == 0)
        throw SProblem{"division by zero"};
    return b == -1 ? 0 : a % b;
}
double Remainder(double a, double b) { return std::fmod(a, b); }

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

int64_t ApplyRoundTo(int64_t value, int64_t digits) {
    return digits >= 0 ? value : ToInteger(RoundTo(static_cast<double>(value), static_cast<double>(digits)));
}
double ApplyRoundTo(double value, double digits) { return RoundTo(value, digits); }

FormulaNumber ApplyFunction(EFormulaOp op, FormulaNumber x) {
    if (IsRounding(op) && std::holds_alternative<int64_t>(x))
        return x;
    const double result = ApplyReal(op, ToReal(x));
    return IsRounding(op) && IsInteger(result) ? FormulaNumber(static_cast<int64_t>(result)) : result;
}

template <class Number> int64_t Sign(Number x) { return (x > 0) - (x < 0); }

FormulaNumber Negate(FormulaNumber x) {
    return std::visit([](auto number) -> FormulaNumber { return Subtract(decltype(number){0}, number); }, x);
}

int64_t Sign(FormulaNumber x) {
    return std::visit([](auto number) { return Sign(number); }, x);
}

bool IsZero(FormulaNumber x) {
    return std::visit([](auto number) { return number == 0; }, x);
}

FormulaNumber ApplyUnary(EFormulaOp op, FormulaNumber x) {
    switch (op) {
    case EFormulaOp::Negate:
        return Negate(x);
    case EFormulaOp::Complement:
        return ~ToInteger(x);
    case EFormulaOp::Not:
        return IsZero(x) ? 1 : 0;
    case EFormulaOp::ToBool:
        return IsZero(x) ? 0 : 1;
    case EFormulaOp::Sgn:
        return Sign(x);
    case EFormulaOp::Abs:
        return Sign(x) < 0 ? Negate(x) : x;
    default:
        return ApplyFunction(op, x);
    }
}

int64_t ApplyBitwise(EFormulaOp op, int64_t a, int64_t b) {
    switch (op) {
    case EFormulaOp::BitOr:
        return a | b;
    case EFormulaOp::BitXor:
        return a ^ b;
    case EFormulaOp::BitAnd:
        return a & b;
    case EFormulaOp::ShiftLeft:
        return ShiftLeft(a, b);
    default:
        return ShiftRight(a, b);
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

template <class Number> FormulaNumber ApplyArithmetic(EFormulaOp op, Number a, Number b) {
    switch (op) {
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

bool IsBitwise(EFormulaOp op) {
    return (op >= EFormulaOp::BitOr && op <= EFormulaOp::BitAnd) || op == EFormulaOp::ShiftLeft ||
           op == EFormulaOp::ShiftRight;
}

/// One double makes doubles of both, except where only bits make sense.
FormulaNumber ApplyBinary(EFormulaOp op, FormulaNumber a, FormulaNumber b) {
    if (IsBitwise(op))
        return ApplyBitwise(op, ToInteger(a), ToInteger(b));
    const int64_t *const x = std::get_if<int64_t>(&a);
    const int64_t *const y = std::get_if<int64_t>(&b);
    return x != nullptr && y != nullptr ? ApplyArithmetic(op, *x, *y) : ApplyArithmetic(op, ToReal(a), ToReal(b));
}

bool IsBinary(EFormulaOp op) {
    return (op >= EFormulaOp::BitOr && op <= EFormulaOp::Power) || op == EFormulaOp::RoundTo;
}

class CFormulaMachine {
public:
    CFormulaMachine(const SFormula &formula, IFormulaVariables &variables)
        : m_formula(formula), m_variables(variables) {}

    FormulaNumber Run() {
        for (std::size_t at = 0; at < m_formula.code.size();)
            at = Step(m_formula.code[at], at + 1);
        return m_stack.back();
    }

private:
    /// \returns the next instruction.
    std::size_t Step(const SFormulaInstruction &instruction, std::size_t next) {
        switch (instruction.op) {
        case EFormulaOp::Constant:
            Push(m_formula.constants[instruction.operand]);
            return next;
        case EFormulaOp::Variable:
            Push(m_variables.Get(instruction.operand));
            return next;
        case EFormulaOp::Jump:
            return instruction.operand;
        case EFormulaOp::JumpIfZero:
            return IsZero(Pop()) ? instruction.operand : next;
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
        if (IsZero(Pop()) == isOr)
            return next;
        Push(isOr ? 1 : 0);
        return instruction.operand;
    }

    void Apply(EFormulaOp op) {
        const FormulaNumber last = Pop();
        Push(IsBinary(op) ? ApplyBinary(op, Pop(), last) : ApplyUnary(op, last));
    }

    void Push(FormulaNumber number) {
        m_stack.push_back(m_formula.kind == EFormulaKind::Float ? ToReal(number) : number);
    }

    FormulaNumber Pop() {
        const FormulaNumber top = m_stack.back();
        m_stack.pop_back();
        return top;
    }

    const SFormula &m_formula;
    IFormulaVariables &m_variables;
    std::vector<FormulaNumber> m_stack;
};

[[noreturn]] void Fail(const SFormula &formula, const SProblem &problem) {
    throw RUNTIME_EXCEPTION("Node '%s': %s in formula '%s'", formula.owner.c_str(), problem.text, formula.text.c_str());
}

} // namespace

double ToReal(FormulaNumber number) {
    return std::visit([](auto value) { return static_cast<double>(value); }, number);
}

int64_t ToInteger(FormulaNumber result, const SFormula &formula) {
    try {
        return ToInteger(result);
    } catch (const SProblem &problem) {
        Fail(formula, problem);
    }
}

FormulaNumber EvaluateFormula(const SFormula &formula, IFormulaVariables &variables) {
    try {
        return CFormulaMachine(formula, variables).Run();
    } catch (const SProblem &problem) {
        Fail(formula, problem);
    }
}

} // namespace GenApi
