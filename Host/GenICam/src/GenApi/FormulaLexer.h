#pragma once

#include <cstdint>
#include <string_view>

namespace GenApi {

enum class EToken : uint8_t {
    End,
    Number,
    Name,
    LeftParenthesis,
    RightParenthesis,
    Comma,
    Question,
    Colon,
    OrOr,
    AndAnd,
    Or,
    Xor,
    And,
    Equal,
    NotEqual,
    Less,
    LessEqual,
    Greater,
    GreaterEqual,
    ShiftLeft,
    ShiftRight,
    Plus,
    Minus,
    Star,
    Slash,
    Percent,
    StarStar,
    Tilde,
    Bang,
    Unknown
};

struct SToken {
    EToken kind;
    std::string_view text;
};

/// Splits a formula into tokens.
class CFormulaLexer {
public:
    explicit CFormulaLexer(std::string_view text) : m_rest(text) {}
    SToken Next();

private:
    SToken Take(EToken kind, std::size_t length);
    SToken TakeNumber();
    SToken TakeName();

    std::string_view m_rest;
};

} // namespace GenApi
