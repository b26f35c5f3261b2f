#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
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

/// Integer formulas compute in 64-bit two's complement until a fraction or a function such as LN makes a value a
/// double; the others compute in double precision throughout.
enum class EFormulaKind : uint8_t { Integer, Float };

using FormulaNumber = std::variant<int64_t, double>;

/// A parsed formula. Immutable, so any thread may evaluate it.
struct SFormula {
    /// As it stands in the file, for messages.
    std::string text;
    /// Node it belongs to, for messages.
    std::string owner;
    EFormulaKind kind = EFormulaKind::Integer;
    std::vector<SFormulaInstruction> code;
    std::vector<FormulaNumber> constants;
    /// Names of the variables, each once.
    std::vector<std::string> variables;
};

/// \throws RuntimeException naming owner and formula on a syntax error, and when the formula is too long or too deep.
SFormula CompileFormula(std::string_view text, EFormulaKind kind, std::string_view owner);

/// Supplies the values of a formula's variables, each asked for when it is first needed.
class IFormulaVariables {
public:
    virtual ~IFormulaVariables() = default;
    /// \param variable index in SFormula::variables.
    virtual FormulaNumber Get(std::size_t variable) = 0;
};

/// Doubles follow IEEE 754, so that a division by zero is infinite. A shift by 64 or more leaves nothing but the sign.
/// \throws RuntimeException naming owner and formula on an integer's division by zero, INT64_MIN / -1, a shift by a
/// negative number, or a number that is no 64-bit integer where one is needed; whatever the variables throw.
FormulaNumber EvaluateFormula(const SFormula &formula, IFormulaVariables &variables);

/// Fractions are cut off. \throws RuntimeException naming owner and formula when it is no 64-bit integer.
int64_t ToInteger(FormulaNumber result, const SFormula &formula);
double ToReal(FormulaNumber number);

/// A number in a formula or a Constant; none when the text is no number.
std::optional<FormulaNumber> ParseFormulaNumber(std::string_view text, EFormulaKind kind);

/// The constants PI and E in any case. \returns false for any other name.
bool IsFormulaConstant(std::string_view name, double &value);

} // namespace GenApi
