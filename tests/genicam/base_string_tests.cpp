#include "Base/GCStringVector.h"

#include "Base/GCException.h"

#include <gmock/gmock.h>

namespace {

using GenICam::gcstring;

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

} // namespace
