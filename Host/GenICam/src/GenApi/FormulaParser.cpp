#include "Formula.h"
#include "FormulaLexer.h"
#include "Text.h"

#include <algorithm>
#include <unordered_map>

namespace GenApi {

namespace {

constexpr std::size_t maxFormulaLength = std::size_t{64} * 1024;
// Each level costs a few stack frames while parsing.
constexpr unsigned maxFormulaDepth = 1000;

struct SBinaryOperator {
    EToken token;
    EFormulaOp op;
    /// Higher binds tighter.
    int precedence;
};

constexpr int lowestPrecedence = 1;

constexpr SBinaryOperator binaryOperators[] = {
    {EToken::OrOr, EFormulaOp::Or, lowestPrecedence},
    {EToken::AndAnd, EFormulaOp::And, 2},
    {EToken::Or, EFormulaOp::BitOr, 3},
    {EToken::Xor, EFormulaOp::BitXor, 4},
    {EToken::And, EFormulaOp::BitAnd, 5},
    {EToken::Equal, EFormulaOp::Equal, 6},
    {EToken::NotEqual, EFormulaOp::NotEqual, 6},
    {EToken::Less, EFormulaOp::Less, 7},
    {EToken::LessEqual, EFormulaOp::LessEqual, 7},
    {EToken::Greater, EFormulaOp::Greater, 7},
    {EToken::GreaterEqual, EFormulaOp::GreaterEqual, 7},
    {EToken::ShiftLeft, EFormulaOp::ShiftLeft, 8},
    {EToken::ShiftRight, EFormulaOp::ShiftRight, 8},
    {EToken::Plus, EFormulaOp::Add, 9},
    {EToken::Minus, EFormulaOp::Subtract, 9},
    {EToken::Star, EFormulaOp::Multiply, 10},
    {EToken::Slash, EFormulaOp::Divide, 10},
    {EToken::Percent, EFormulaOp::Remainder, 10},
    {EToken::StarStar, EFormulaOp::Power, 11},
};

struct SFunction {
    std::string_view name;
    EFormulaOp op;
};

constexpr SFunction functions[] = {
    {"SGN", EFormulaOp::Sgn},     {"NEG", EFormulaOp::Negate},  {"ABS", EFormulaOp::Abs},
    {"TRUNC", EFormulaOp::Trunc}, {"FLOOR", EFormulaOp::Floor}, {"CEIL", EFormulaOp::Ceil},
    {"ROUND", EFormulaOp::Round}, {"SQRT", EFormulaOp::Sqrt},   {"EXP", EFormulaOp::Exp},
    {"LN", EFormulaOp::Ln},       {"LG", EFormulaOp::Lg},       {"SIN", EFormulaOp::Sin},
    {"COS", EFormulaOp::Cos},     {"TAN", EFormulaOp::Tan},     {"ASIN", EFormulaOp::Asin},
    {"ACOS", EFormulaOp::Acos},   {"ATAN", EFormulaOp::Atan},
};

/// Precedence climbing that emits code for a stack machine as it goes.
class CFormulaParser {
public:
    CFormulaParser(std::string_view text, EFormulaKind kind, std::string_view owner) : m_lexer(text) {
        m_formula.kind = kind;
        m_formula.text = text;
        m_formula.owner = owner;
        Advance();
    }

    SFormula Parse() {
        ParseConditional();
        if (m_token.kind != EToken::End)
            Fail("unexpected text");
        return std::move(m_formula);
    }

private:
    /// Counts the nesting of the parser's own calls.
    class CLevel {
    public:
        explicit CLevel(CFormulaParser &parser) : m_parser(parser) {
            if (++m_parser.m_depth > maxFormulaDepth)
                m_parser.Fail("nested too deeply");
        }
        ~CLevel() { --m_parser.m_depth; }
        CLevel(const CLevel &) = delete;
        CLevel &operator=(const CLevel &) = delete;

    private:
        CFormulaParser &m_parser;
    };

    void ParseConditional();
    void ParseBinary(int minimumPrecedence);
    void ParseOperand(const SBinaryOperator &op);
    void ParseUnary();
    void ParsePrimary();
    void ParseNumber();
    void ParseName();
    void ParseCall(std::string_view name);

    [[noreturn]] void Fail(const char *problem) const;
    void Advance() { m_token = m_lexer.Next(); }
    bool Accept(EToken kind);
    void Expect(EToken kind, const char *problem);
    std::size_t Emit(EFormulaOp op, std::size_t operand = 0);
    void EmitVariable(std::string_view name);
    void LandHere(std::size_t jump) { m_formula.code[jump].operand = static_cast<uint32_t>(m_formula.code.size()); }

    CFormulaLexer m_lexer;
    SToken m_token{};
    SFormula m_formula;
    std::unordered_map<std::string_view, std::size_t> m_variables;
    unsigned m_depth = 0;
};

void CFormulaParser::Fail(const char *problem) const {
    throw RUNTIME_EXCEPTION("Node '%s': %s at '%.*s' in formula '%s'", m_formula.owner.c_str(), problem,
                            static_cast<int>(std::min<std::size_t>(m_token.text.size(), 40)), m_token.text.data(),
                            m_formula.text.c_str());
}

bool CFormulaParser::Accept(EToken kind) {
    if (m_token.kind != kind)
        return false;
    Advance();
    return true;
}

void CFormulaParser::Expect(EToken kind, const char *problem) {
    if (!Accept(kind))
        Fail(problem);
}

std::size_t CFormulaParser::Emit(EFormulaOp op, std::size_t operand) {
    m_formula.code.push_back({op, static_cast<uint32_t>(operand)});
    return m_formula.code.size() - 1;
}

/// Long tables are written as chains `a ? x : b ? y : ...`, so the else branch is a loop.
void CFormulaParser::ParseConditional() {
    const CLevel level(*this);
    std::vector<std::size_t> exits;
    ParseBinary(lowestPrecedence);
    while (Accept(EToken::Question)) {
        const std::size_t toElse = Emit(EFormulaOp::JumpIfZero);
        ParseConditional();
        Expect(EToken::Colon, "':' expected");
        exits.push_back(Emit(EFormulaOp::Jump));
        LandHere(toElse);
        ParseBinary(lowestPrecedence);
    }
    for (const std::size_t exit : exits)
        LandHere(exit);
}

void CFormulaParser::ParseBinary(int minimumPrecedence) {
    const CLevel level(*this);
    ParseUnary();
    for (;;) {
        const auto op =
            std::find_if(std::begin(binaryOperators), std::end(binaryOperators),
                         [this](const SBinaryOperator &candidate) { return candidate.token == m_token.kind; });
        if (op == std::end(binaryOperators) || op->precedence < minimumPrecedence)
            return;
        Advance();
        ParseOperand(*op);
    }
}

void CFormulaParser::ParseOperand(const SBinaryOperator &op) {
    const bool isLazy = op.op == EFormulaOp::And || op.op == EFormulaOp::Or;
    const std::size_t jump = isLazy ? Emit(op.op) : 0;
    const bool isRightAssociative = op.op == EFormulaOp::Power;
    ParseBinary(isRightAssociative ? op.precedence : op.precedence + 1);
    if (!isLazy) {
        Emit(op.op);
        return;
    }
    Emit(EFormulaOp::ToBool);
    LandHere(jump);
}

void CFormulaParser::ParseUnary() {
    std::vector<EFormulaOp> prefixes;
    for (;;) {
        if (Accept(EToken::Minus))
            prefixes.push_back(EFormulaOp::Negate);
        else if (Accept(EToken::Tilde))
            prefixes.push_back(EFormulaOp::Complement);
        else if (Accept(EToken::Bang))
            prefixes.push_back(EFormulaOp::Not);
        else if (!Accept(EToken::Plus))
            break;
    }
    ParsePrimary();
    for (auto prefix = prefixes.rbegin(); prefix != prefixes.rend(); ++prefix)
        Emit(*prefix);
}

void CFormulaParser::ParsePrimary() {
    if (m_token.kind == EToken::Number)
        return ParseNumber();
    if (m_token.kind == EToken::Name)
        return ParseName();
    Expect(EToken::LeftParenthesis, "operand expected");
    ParseConditional();
    Expect(EToken::RightParenthesis, "')' expected");
}

void CFormulaParser::ParseNumber() {
    const auto number = ParseFormulaNumber(m_token.text, m_formula.kind);
    if (!number)
        Fail("no number");
    m_formula.constants.push_back(*number);
    Emit(EFormulaOp::Constant, m_formula.constants.size() - 1);
    Advance();
}

void CFormulaParser::ParseName() {
    const std::string_view name = m_token.text;
    Advance();
    if (Accept(EToken::LeftParenthesis))
        ParseCall(name);
    else
        EmitVariable(name);
}

void CFormulaParser::ParseCall(std::string_view name) {
    if (Accept(EToken::RightParenthesis)) {
        // PI() and E() are as good as PI and E.
        double value = 0;
        if (!IsFormulaConstant(name, value))
            Fail("argument expected");
        return EmitVariable(name);
    }
    const auto function = std::find_if(std::begin(functions), std::end(functions), [name](const SFunction &candidate) {
        return EqualsNoCase(candidate.name, name);
    });
    if (function == std::end(functions))
        Fail("unknown function before");
    ParseConditional();
    EFormulaOp op = function->op;
    if (op == EFormulaOp::Round && Accept(EToken::Comma)) {
        ParseConditional();
        op = EFormulaOp::RoundTo;
    }
    Expect(EToken::RightParenthesis, "')' expected");
    Emit(op);
}

void CFormulaParser::EmitVariable(std::string_view name) {
    const auto [known, isNew] = m_variables.emplace(name, m_formula.variables.size());
    if (isNew)
        m_formula.variables.emplace_back(name);
    Emit(EFormulaOp::Variable, known->second);
}

} // namespace

SFormula CompileFormula(std::string_view text, EFormulaKind kind, std::string_view owner) {
    if (text.size() > maxFormulaLength)
        throw RUNTIME_EXCEPTION("Node '%.*s': the formula is longer than %zu characters",
                                static_cast<int>(owner.size()), owner.data(), maxFormulaLength);
    return CFormulaParser(text, kind, owner).Parse();
}

/// Hexadecimal numbers are masks as often as not, so they are two's complement in both kinds of formula.
std::optional<FormulaNumber> ParseFormulaNumber(std::string_view text, EFormulaKind kind) {
    const auto integer = ParseInteger(text);
    const auto real = ParseFloat(text);
    const bool isMask = text.find_first_of("xX") != std::string_view::npos;
    if (integer && (isMask || kind == EFormulaKind::Integer))
        return *integer;
    return real && !isMask ? std::optional<FormulaNumber>(*real) : std::nullopt;
}

bool IsFormulaConstant(std::string_view name, double &value) {
    if (EqualsNoCase(name, "PI"))
        value = 3.14159265358979323846;
    else if (EqualsNoCase(name, "E"))
        value = 2.71828182845904523536;
    else
        return false;
    return true;
}

} // namespace GenApi
