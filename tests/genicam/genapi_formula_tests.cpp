#include "genapi_support.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace GenApi;
using namespace GenApiTest;

namespace {

std::string Escaped(const std::string &text) {
    std::string escaped;
    for (const char ch : text)
        escaped += ch == '<' ? "&lt;" : ch == '&' ? "&amp;" : std::string(1, ch);
    return escaped;
}

/// A node "F0", "F1", ... for each formula in one document, so that faulty ones stand beside sound ones.
std::string Nodes(const std::string &element, const std::vector<std::string> &formulas) {
    std::string nodes = "<Integer Name='Seven'><Value>7</Value><Min>-1</Min><Max>70</Max><Inc>2</Inc></Integer>"
                        "<Integer Name='Minus'><Value>-3</Value></Integer>"
                        "<Float Name='Half'><Value>2.5</Value></Float>"
                        "<Boolean Name='Yes'><Value>1</Value></Boolean>"
                        "<Enumeration Name='Mode'><EnumEntry Name='Off'><Value>4</Value></EnumEntry>"
                        "<EnumEntry Name='On'><Value>5</Value></EnumEntry><Value>4</Value></Enumeration>"
                        "<IntReg Name='Unread'><Address>0</Address><AccessMode>RO</AccessMode><pPort>Device</pPort>"
                        "</IntReg>";
    for (std::size_t i = 0; i < formulas.size(); ++i)
        nodes += "<" + element + " Name='F" + std::to_string(i) +
                 "'><pVariable Name='A'>Seven</pVariable><pVariable Name='B'>Minus</pVariable>"
                 "<pVariable Name='H'>Half</pVariable><pVariable Name='Y'>Yes</pVariable>"
                 "<pVariable Name='M'>Mode</pVariable><pVariable Name='U'>Unread</pVariable>"
                 "<pVariable Name='N.Entry.On'>Mode</pVariable>"
                 "<Constant Name='K'>100</Constant><Constant Name='Z'>0.125</Constant>"
                 "<Expression Name='W'>Z * 12</Expression><Expression Name='X'>A * 2</Expression><Formula>" +
                 Escaped(formulas[i]) + "</Formula></" + element + ">";
    return nodes;
}

/// "FORMULA -> VALUE" or "FORMULA -> error: PART OF ITS TEXT", with semicolons between them.
const char *const integerFormulas =
    // Numbers.
    "42 -> 42; 0xFF -> 255; 0XfFfFfFfFfFfFfFfF -> -1;  ( 1 )  -> 1; 1.0 + 2e1 -> 21; 1.5 -> 1; "
    "0x -> error: no number; 12A -> error: unexpected text; 99999999999999999999 -> error: 64-bit integer; "
    // Precedence and association, low to high.
    "1 ? 2 : 3 ? 4 : 5 -> 2; 0 ? 2 : 0 ? 4 : 5 -> 5; 1 ? 0 ? 1 : 2 : 3 -> 2; 1 || 0 && 0 -> 1; 0 && 1 | 1 -> 0; "
    "2 | 4 ^ 6 -> 2; 6 ^ 3 & 1 -> 7; 6 & 3 = 3 -> 0; 2 = 1 < 3 -> 0; 1 < 1 << 1 -> 1; 1 << 2 + 1 -> 8; "
    "2 + 3 * 4 -> 14; 2 * 3 ** 2 -> 18; 2 ** 3 ** 2 -> 512; -2 ** 2 -> 4; 2 ** -1 -> 0; -1 ** -3 -> -1; -1 ** -2 -> 1; "
    "10 - 4 - 3 -> 3; 100 / 10 / 5 -> 2; 7 % 4 * 2 -> 6; 64 >> 2 >> 1 -> 8; - - 5 -> 5; ~0 -> -1; !5 -> 0; "
    "!0 + 1 -> 2; +5 -> 5; 3 - -2 -> 5; "
    // Comparison.
    "5 <> 5 -> 0; 5 != 4 -> 1; 5 == 5 -> 1; (5 >= 5) + (5 <= 4) -> 1; 7 && 8 -> 1; 0 || 9 -> 1; A=-3 -> 0; "
    // 64-bit arithmetic.
    "0x7FFFFFFFFFFFFFFF + 1 -> -9223372036854775808; 3037000500 * 3037000500 -> -9223372036709301616; -7 / 2 -> -3; "
    "-7 % 2 -> -1; -1 >> 63 -> -1; 1 << 63 -> -9223372036854775808; 0x8000000000000000 % -1 -> 0; "
    "1 / 0 -> error: division by zero; 1 % 0 -> error: division by zero; 0 ** -1 -> error: division by zero; "
    "0x8000000000000000 / -1 -> error: overflow; 1 << 64 -> 0; -1 >> 64 -> -1; 1 >> -1 -> error: shift; "
    "EXP(100) -> error: 64-bit integer; 1 / 0.0 -> error: 64-bit integer; "
    // Fractions make doubles of what they meet, except where only bits make sense.
    "round(2.5) -> 3; LN(8) / LN(2) -> 3; 0.1 * 25 -> 2; 2 * 0.5 + 3 / 2 -> 2; 7 / 2.0 * 2 -> 7; -1.5 -> -1; "
    "9007199254740993 & 3.9 -> 1; (0.5 < 1) / 2 -> 0; SQRT(2) * SQRT(2) + 0.1 -> 2; Z * 10 -> 1; W -> 1; "
    // Laziness.
    "1 || 1 / 0 -> 1; 0 && 1 / 0 -> 0; 1 ? 5 : 1 / 0 -> 5; 0 ? 1 / 0 : 6 -> 6; "
    // Functions and constants in any case.
    "SGN(-9) + abs(-9) + Neg(3) -> 5; SQRT(17) -> 4; ROUND(149, -2) -> 100; TRUNC(5) + floor(5) + CEIL(5) -> 15; "
    "PI * 10 + e -> 34; PI() -> 3; "
    // Names.
    "A + B -> 4; A.Value * K -> 700; A.Min + A.Max + A.Inc -> 71; X + X -> 28; M = M.Entry.Off -> 1; "
    "N.Entry.On -> 5; Y ? 3 : 4 -> 3; H -> 3; M.Entry.Missing -> error: no entry 'Missing'; "
    "Unknown + 1 -> error: unknown name 'Unknown'; "
    // Faults.
    " -> error: operand expected; 1 + -> error: operand expected; (1 -> error: ')' expected; "
    "1) -> error: unexpected text; 1 ? 2 -> error: ':' expected; 1 2 -> error: unexpected text; "
    "FOO(1) -> error: unknown function; SIN() -> error: argument expected; SIN(1, 2) -> error: ')' expected; "
    "1 $ 2 -> error: unexpected text; = 1 -> error: operand expected";

const char *const floatFormulas =
    "1.5e2 + .5 -> 150.5; 2E-1 -> 0.2; 7 / 2 -> 3.5; 10000000000000000000 / 1e19 -> 1; -7.5 % 2 -> -1.5; "
    "2 ** 0.5 -> 1.4142135623730951; H * 2 -> 5; 6 & 3.9 -> 2; 1 << 3 -> 8; ~1.2 -> -2; "
    "1e30 | 1 -> error: 64-bit integer; -1 / 0 -> -inf; 1 % 0.0 -> nan; (1 < 2) / 2 -> 0.5; ROUND(7) / 2 -> 3.5; "
    "1 / (1 / 0) -> 0; 0xFFFFFFFFFFFFFFFF & 6 -> 6; 1e-400 + 1e400 -> 1.7976931348623157e308; "
    "1.2.3 -> error: no number; SIN(PI / 2) + COS(0) + TAN(0) -> 2; "
    "ASIN(1) + ACOS(1) + ATAN(0) -> 1.5707963267948966; EXP(1) - E -> 0; LN(E) + LG(1000) -> 4; "
    "ROUND(2.567, 2) -> 2.57; ROUND(-2.5) + TRUNC(-2.7) + FLOOR(-2.1) + CEIL(-2.9) -> -10; "
    "SGN(-0.5) + ABS(-0.5) + NEG(1) -> -1.5; SQRT(-1) = SQRT(-1) -> 0; H > 2 ? H.Value : 1 / 0 -> 2.5";

/// Calls check(node, expected) for each formula; the table's errors are those that check throws.
template <class Check> void expectFormulas(const char *element, const std::string &table, Check check) {
    std::vector<std::string> formulas;
    const auto pairs = Pairs(table, "; ");
    for (const auto &pair : pairs)
        formulas.push_back(pair.first);
    const Camera camera(Nodes(element, formulas));
    for (std::size_t i = 0; i < formulas.size(); ++i) {
        const std::string &expected = pairs[i].second;
        const std::string name = "F" + std::to_string(i);
        SCOPED_TRACE(element + (": " + formulas[i]));
        try {
            check(camera[name.c_str()], expected);
        } catch (const GenICam::RuntimeException &e) {
            const std::string text = e.GetDescription();
            ASSERT_EQ(expected.substr(0, 7), "error: ") << text;
            EXPECT_NE(text.find(expected.substr(7)), std::string::npos) << text;
            EXPECT_NE(text.find('\'' + name + '\''), std::string::npos) << text;
        }
    }
}

TEST(GenApiFormula, Values) {
    expectFormulas("IntSwissKnife", integerFormulas, [](INode *node, const std::string &expected) {
        EXPECT_EQ(std::to_string(CIntegerPtr(node)->GetValue()), expected);
    });
    expectFormulas("SwissKnife", floatFormulas, [](INode *node, const std::string &expected) {
        const double value = CFloatPtr(node)->GetValue();
        ASSERT_NE(expected.substr(0, 7), "error: ") << value;
        const double wanted = std::stod(expected);
        EXPECT_TRUE(std::isfinite(wanted) ? std::abs(value - wanted) < 1e-12
                                          : value == wanted || (std::isnan(value) && std::isnan(wanted)))
            << value;
    });
}

TEST(GenApiFormula, DepthAndLengthAreBounded) {
    const auto nested = [](std::size_t depth) { return std::string(depth, '(') + "1" + std::string(depth, ')'); };
    std::string chain;
    for (int i = 0; i < 3000; ++i)
        chain += "A = " + std::to_string(i + 100) + " ? " + std::to_string(i) + " : ";
    std::string sum = "0";
    for (int i = 0; i < 10000; ++i)
        sum += " + 1";
    const Camera camera(Nodes(
        "IntSwissKnife", {nested(100), nested(100000), chain + "77", sum, "1 +" + std::string(1 << 20, ' ') + "1"}));
    EXPECT_EQ(CIntegerPtr(camera["F0"])->GetValue(), 1);
    EXPECT_THROW(CIntegerPtr(camera["F1"])->GetValue(), GenICam::RuntimeException);
    EXPECT_EQ(CIntegerPtr(camera["F2"])->GetValue(), 77);
    EXPECT_EQ(CIntegerPtr(camera["F3"])->GetValue(), 10000);
    EXPECT_THROW(CIntegerPtr(camera["F4"])->GetValue(), GenICam::RuntimeException);
}

} // namespace
