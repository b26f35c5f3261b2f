#include "Base/GCException.h"

#include <gmock/gmock.h>

namespace {

using namespace GenICam;

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

} // namespace
