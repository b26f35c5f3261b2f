#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace GenApi {

/// Operations of a compiled formula, which runs on a stack of numbers.
enum class EFormulaOp : uint8_t {
    Constant, ///< Pushes a constant.
    Variable, ///< Pushes a variable.
    Jump,
    JumpIfZero, ///< Takes the top off and jumps when it was zero.
    And,        ///< Top zero: becomes 0 and jumps. Else takes it off.
    Or,         ///< Top not zero: becomes 1 and jumps. Else takes it off.
    ToBool,
    // One operand.
    Negate,
    Complement,
    Not,
    // Two operands.
    BitOr,
    BitXor,
    BitAnd,
    Equal,
    NotEqual,
    Less,
    LessEqual,
    Greater,
    GreaterEqual,
    ShiftLeft,
    ShiftRight,
    Add,
    Subtract,
    Multiply,
    Divide,
    Remainder,
    Power,
    // Functions of one operand.
    Sgn,
    Abs,
    Trunc,
    Floor,
    Ceil,
    Round,
    Sqrt,
    Exp,
    Ln,
    Lg,
    Sin,
    Cos,
    Tan,
    Asin,
    Acos,
    Atan,
    // Two operands: value and number of decimals.
    RoundTo
};

struct SFormulaInstruction {
    EFormulaOp op;
    /// Index of a constant or variable, or the instruction to jump to.
    uint32_t operand;
};

struct SFormulaConstant {
    /// The literal as integer; meaningless when it is a fraction, which integer formulas do not have.
    int64_t integer;
    double real;
};

/// A parsed formula. Immutable, so any thread may evaluate it.
struct SFormula {
    /// As it stands in the file, for messages.
    std::string text;
    /// Node it belongs to, for messages.
    std::string owner;
    std::vector<SFormulaInstruction> code;
    std::vector<SFormulaConstant> constants;
    /// Names of the variables, each once.
    std::vector<std::string> variables;
};

/// Integer formulas compute in 64-bit two's complement, the others in double precision.
enum class EFormulaKind : uint8_t { Integer, Float };

/// \throws RuntimeException naming owner and formula on a syntax error, and when the formula is too long or too deep.
SFormula CompileFormula(std::string_view text, EFormulaKind kind, std::string_view owner);

/// Supplies the values of a formula's variables, each asked for when it is first needed.
template <class Number> class IFormulaVariables {
public:
    virtual ~IFormulaVariables() = default;
    /// \param variable index in SFormula::variables.
    virtual Number Get(std::size_t variable) = 0;
};

/// \p Number is int64_t for an integer formula, double for any other.
/// \throws RuntimeException naming owner and formula on division by zero, INT64_MIN / -1, a shift outside 0 to 63, or a
/// number that is no 64-bit integer where one is needed; whatever the variables throw.
template <class Number> Number EvaluateFormula(const SFormula &formula, IFormulaVariables<Number> &variables);
extern template int64_t EvaluateFormula(const SFormula &, IFormulaVariables<int64_t> &);
extern template double EvaluateFormula(const SFormula &, IFormulaVariables<double> &);

/// The constants PI and E in any case. \returns false for any other name.
bool IsFormulaConstant(std::string_view name, double &value);

} // namespace GenApi
