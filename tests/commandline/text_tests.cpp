#include "Arguments.h"
#include "Json.h"
#include "Table.h"
#include "Text.h"

#include <gmock/gmock.h>

#include <sstream>

using namespace commandline;
using testing::HasSubstr;

namespace {

TEST(Text, IsHarmlessOnATerminal) {
    const struct {
        const char *text, *shown;
        int width;
    } rows[] = {
        {"Robot cell", "Robot cell", 10},
        {"\x1b[31mred\x07\r\n", "[31mred", 7},
        {"a\x80\xffz", "a??z", 4},
        {"\u202Eabc\u200B\u2066", "abc", 3},
        {"K\u00FChler \u6444\u50CF", "K\u00FChler \u6444\u50CF", 11},
        {"\xe2\x82", "??", 2},
        {"", "", 0},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(row.shown, harmless(row.text));
        EXPECT_EQ(row.width, displayWidth(harmless(row.text))) << row.text;
    }
}

TEST(Text, OfACameraIsValidInJson) {
    commissioning::Camera camera;
    camera.name = "a\xff\x1b\u009B";
    const std::string text = printed(inventoryJson({{}, {camera}, {}}));
    EXPECT_EQ(std::string::npos, text.find('\xc2')) << "a control sequence for some terminals";
    EXPECT_EQ("a\uFFFD\x1b\u009B", Json::parse(text)["cameras"][0]["name"].get<std::string>());
}

TEST(Table, FitsTheTerminal) {
    Table table({"MAC", "MODEL"}, {1});
    table.add({"02:5A:E3:01:00:01", "A model name that is much too long \u6444\u50CF"});
    EXPECT_EQ("MAC                MODEL\n"
              "02:5A:E3:01:00:01  A model nam~\n",
              table.text(31));
    EXPECT_THAT(table.text(0), HasSubstr("\u6444\u50CF\n"));
    EXPECT_THAT(table.text(5), HasSubstr("MAC                MODEL\n")); // headings stay
}

TEST(Arguments, AreCheckedTogether) {
    const struct {
        std::vector<const char *> words;
        const char *error; ///< null when there is none
    } rows[] = {
        {{"--json", "list", "--adapter", "a", "--adapter", "b"}, nullptr},
        {{"set", "x", "static", "10.0.0.1/8", "--mask", "255.0.0.0", "--gateway", "10.0.0.2"}, nullptr},
        {{"rescue", "x", "y", "--dhcp"}, nullptr},
        {{}, "subcommand is required: list, show"},
        {{"lits"}, "no command 'lits'. There are: list, show"},
        {{"plan", "--quiet"}, "subcommand is required: export"},
        {{"plan", "foo"}, "no command 'foo'. There are: export, check"},
        {{"set", "x", "static"}, "needs an address"},
        {{"set", "x", "auto", "10.0.0.1"}, "only static"},
        {{"set", "x", "2"}, "{static,dhcp,auto}"},
        {{"set", "x", "static", "10.0.0.1/8", "--mask", "255.255.0.0"}, "prefix"},
        {{"set", "x", "static", "10.0.0.1/33"}, "PREFIX"},
        {{"set", "x", "static", "10.0.0"}, "ADDRESS"},
        {{"set", "x", "static", "10.0.0.1", "--mask", "255.0.255.0"}, "--mask"},
        {{"force", "x"}, "ADDRESS"},
        {{"name", "x", "seventeen bytes ."}, "16 bytes"},
        {{"rescue"}, "--all"},
        {{"rescue", "x", "--all"}, "excludes"},
        {{"rescue", "x", "--dhcp", "--auto"}, "at most 1"},
        {{"list", "--ask", "here"}, "--ask"},
        {{"list", "--ask", ""}, "--ask"},
        {{"force", "x", ""}, "ADDRESS"},
        {{"force", "x", "/24"}, "ADDRESS"},
        {{"show", ""}, nullptr}, // there is no such camera
        {{"list", "--timeout", "0"}, "--timeout"},
    };
    for (const auto &row : rows) {
        std::vector<const char *> words = {"lanvanectl"};
        words.insert(words.end(), row.words.begin(), row.words.end());
        std::ostringstream out;
        std::ostringstream error;
        const Parsed parsed = parseArguments(static_cast<int>(words.size()), words.data(), out, error);
        EXPECT_EQ(row.error == nullptr, parsed.arguments.has_value()) << error.str();
        EXPECT_TRUE(!parsed.arguments || words[1] != std::string("show") || parsed.arguments->cameras.size() == 1);
        EXPECT_EQ(row.error ? 2 : 0, parsed.exitCode);
        EXPECT_THAT(error.str(), HasSubstr(row.error ? row.error : ""));
    }
}

} // namespace
