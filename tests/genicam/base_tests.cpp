#include "Base/GCException.h"
#include "Base/GCStringVector.h"

#include <gmock/gmock.h>

using namespace GenICam;

namespace {

TEST(Exception, CarriesFormattedTextAndSourcePositionThroughCopies) {
    const unsigned int line = __LINE__ + 1;
    const GenericException original = RUNTIME_EXCEPTION("Device '%s': %d of %d (0x%08X)", "%n", 2, 3, 0xE1018006u);
    const GenericException copy(original);
    EXPECT_STREQ("Device '%n': 2 of 3 (0xE1018006)", copy.GetDescription());
    EXPECT_STREQ(__FILE__, copy.GetSourceFileName());
    EXPECT_EQ(line, copy.GetSourceLine());
    for (const char *part : {copy.GetDescription(), __FILE__, "RuntimeException"})
        EXPECT_THAT(copy.what(), testing::HasSubstr(part));
}

TEST(Exception, TakesTextOfAnyLength) {
    const std::string longText(5000, 'x');
    EXPECT_EQ(longText, RUNTIME_EXCEPTION("%s", longText.c_str()).GetDescription());
    EXPECT_STREQ("", GenericException(nullptr, nullptr, 0).GetDescription());
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
    EXPECT_THROW((void)text.substr(7), OutOfRangeException);
}

} // namespace
