#include "MinimalCorvo/Utilities.h"

#include <gtest/gtest.h>

namespace {

using namespace Corvo;

TEST(Environment, ExpandsReferencesInTexts) {
    setenv("CORVO_A", "<$(CORVO_B)>", 1);
    setenv("B", "b", 1);
    const struct {
        const char *text, *expanded;
        int references;
    } cases[] = {
        {"plain text", "plain text", 0},
        {"x$(CORVO_A)y$(B)", "x<$(CORVO_B)>yb", 2}, // values are not expanded once more
        {"$(CORVO_NONE)", "", 1},
        {"$$(B)", "$(B)", 0},
        {"$$$(B)$$", "$b$", 1},
        {"$$$", "$$$", 0}, // too short to be looked at
        {"$()$(B)", "$()b", 1},
        {"$(B", "$(B", 0},
        {"$B $(B) $", "$B b $", 1},
        {"$($(B))", ")", 1}, // a reference to the variable "$(B"
    };
    for (const auto &c : cases) {
        String_t text = c.text;
        EXPECT_EQ(c.references, ExpandEnvironmentVariables(text)) << c.text;
        EXPECT_EQ(c.expanded, text) << c.text;
    }
}

TEST(KeyValue, SplitsTokensIntoTrimmedPairs) {
    const char *text = ";; a = 1 ;\tb=2=3\n,c;=v; ; = ;d=";
    const struct {
        bool found;
        const char *key, *value;
    } tokens[] = {{true, "a", "1"}, {true, "b", "2=3"}, {true, "c", ""}, {true, "", "v"},
                  {false, "", ""},  {false, "", ""},    {true, "d", ""}, {false, "", ""}};
    std::size_t index = 0;
    for (const auto &token : tokens) {
        String_t key, value;
        EXPECT_EQ(token.found, getKeyAndValueFromString(text, ";,", index++, &key, &value)) << token.key;
        EXPECT_EQ(String_t(token.key) + "=" + token.value, key + "=" + value);
    }
    String_t key = "k1=v1;k2=v2", value;
    EXPECT_TRUE(getKeyAndValueFromString(key, ";", 1, &key, &value)); // the text may be one of the outputs
    EXPECT_EQ("k2 v2", key + " " + value);
    EXPECT_FALSE(getKeyAndValueFromString("a=b", ";", 0, nullptr, nullptr));
}

} // namespace
