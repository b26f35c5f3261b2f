#include "FormulaLexer.h"

namespace GenApi {

namespace {

bool IsDigit(char ch) { return ch >= '0' && ch <= '9'; }
bool IsLetter(char ch) { return (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z') || ch == '_'; }
bool IsHexDigit(char ch) { return IsDigit(ch) || (ch >= 'a' && ch <= 'f') || (ch >= 'A' && ch <= 'F'); }

struct SOperator {
    std::string_view text;
    EToken kind;
};

// Longer operators come before their beginnings.
constexpr SOperator operators[] = {
    {"||", EToken::OrOr},
    {"&&", EToken::AndAnd},
    {"<>", EToken::NotEqual},
    {"!=", EToken::NotEqual},
    {"==", EToken::Equal},
    {"<=", EToken::LessEqual},
    {">=", EToken::GreaterEqual},
    {"<<", EToken::ShiftLeft},
    {">>", EToken::ShiftRight},
    {"**", EToken::StarStar},
    {"|", EToken::Or},
    {"^", EToken::Xor},
    {"&", EToken::And},
    {"=", EToken::Equal},
    {"<", EToken::Less},
    {">", EToken::Greater},
    {"+", EToken::Plus},
    {"-", EToken::Minus},
    {"*", EToken::Star},
    {"/", EToken::Slash},
    {"%", EToken::Percent},
    {"~", EToken::Tilde},
    {"!", EToken::Bang},
    {"?", EToken::Question},
    {":", EToken::Colon},
    {",", EToken::Comma},
    {"(", EToken::LeftParenthesis},
    {")", EToken::RightParenthesis},
};

} // namespace

SToken CFormulaLexer::Next() {
    const std::size_t start = m_rest.find_first_not_of(" \t\r\n");
    m_rest.remove_prefix(start == std::string_view::npos ? m_rest.size() : start);
    if (m_rest.empty())
        return {EToken::End, {}};
    if (IsDigit(m_rest[0]) || (m_rest[0] == '.' && m_rest.size() > 1 && IsDigit(m_rest[1])))
        return TakeNumber();
    if (IsLetter(m_rest[0]))
        return TakeName();
    for (const SOperator &op : operators)
        if (m_rest.substr(0, op.text.size()) == op.text)
            return Take(op.kind, op.text.size());
    return Take(EToken::Unknown, 1);
}

SToken CFormulaLexer::Take(EToken kind, std::size_t length) {
    const SToken token{kind, m_rest.substr(0, length)};
    m_rest.remove_prefix(length);
    return token;
}

SToken CFormulaLexer::TakeNumber() {
    std::size_t end = 0;
    const auto at = [this](std::size_t i) { return i < m_rest.size() ? m_rest[i] : '\0'; };
    if (at(0) == '0' && (at(1) == 'x' || at(1) == 'X')) {
        for (end = 2; IsHexDigit(at(end));)
            ++end;
        return Take(EToken::Number, end);
    }
    while (IsDigit(at(end)) || at(end) == '.')
        ++end;
    if (at(end) == 'e' || at(end) == 'E') {
        const std::size_t sign = at(end + 1) == '+' || at(end + 1) == '-' ? 1 : 0;
        if (IsDigit(at(end + 1 + sign)))
            for (end += 1 + sign; IsDigit(at(end));)
                ++end;
    }
    return Take(EToken::Number, end);
}

SToken CFormulaLexer::TakeName() {
    std::size_t end = 0;
    while (end < m_rest.size() && (IsLetter(m_rest[end]) || IsDigit(m_rest[end]) || m_rest[end] == '.'))
        ++end;
    return Take(EToken::Name, end);
}

} // namespace GenApi
