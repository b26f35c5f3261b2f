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
    EXPECT_TRUE(gcstring("a") <= gcstring("b") && gcstring("b") >= gcstring("a")); // texts, not addresses
    EXPECT_EQ(3u, gcstring("a=b==c").find("==x", 2, 2));
    text = "camera";
    EXPECT_EQ("mer", text.substr(2, 3));
    EXPECT_EQ("", text.substr(6));
    EXPECT_THROW((void)text.substr(7), GenICam::OutOfRangeException);
}

TEST(GcStringVector, EditsByIndex) {
    gcstring_vector list(1, "b");
    list.insert(std::size_t{1}, "c");
    list.erase(0);
    EXPECT_TRUE(list.size() == 1 && list.contains("c") && !list.contains("b"));
}

} // namespace
