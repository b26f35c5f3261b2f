#include "Base/GCStringVector.h"

#include "Base/GCException.h"

#include <gmock/gmock.h>

namespace {

using GenICam::gcstring;
using GenICam::gcstring_vector;

TEST(GcString, CountsNullAsEmptyAndKeepsZeroBytes) {
    const char *null = nullptr;
    EXPECT_TRUE(gcstring(null).empty() && gcstring() == null);
    const gcstring withZero(std::string("a\0b", 3));
    EXPECT_EQ(3u, withZero.length());
    EXPECT_NE("a", withZero);
}

TEST(GcString, JoinsComparesAndCutsBytes) {
    gcstring text("b");
    text += text;
    EXPECT_EQ("<abbe>", '<' + ("a" + text + 'e') + ">");
    EXPECT_LT(gcstring("B"), "a");
    EXPECT_GT("\xC3\xA4", gcstring("z"));
    text = "camera";
    EXPECT_EQ("mer", text.substr(2, 3));
    EXPECT_EQ("", text.substr(6));
    EXPECT_THROW((void)text.substr(7), GenICam::OutOfRangeException);
}

TEST(GcString, FindsCharactersTextsAndSets) {
    const gcstring text("a=b==c");
    EXPECT_EQ(1u, text.find('='));
    EXPECT_EQ(3u, text.find("=="));
    EXPECT_EQ(3u, text.find("==x", 2, 2));
    EXPECT_EQ(gcstring::npos, text.find("==x"));
    EXPECT_EQ(gcstring::npos, text.find('=', 100));
    EXPECT_EQ(5u, text.find_first_of("xc"));
    EXPECT_EQ(2u, text.find_first_not_of("a="));
}

TEST(GcStringVector, EditsByIndexAndIterator) {
    gcstring_vector list(1, "b");
    list.insert(list.begin(), "a");
    list.insert(std::size_t{2}, "c");
    EXPECT_THAT(list, testing::ElementsAre("a", "b", "c"));
    list.erase(0);
    list.erase(list.begin());
    EXPECT_TRUE(list.size() == 1 && list.contains("c") && !list.contains("a"));
}

} // namespace
