#include "Base/GCException.h"

#include <gmock/gmock.h>

namespace {

using namespace GenICam;
using testing::HasSubstr;

template <class Exception> class ExceptionFamily : public testing::Test {};
using Family =
    testing::Types<BadAllocException, InvalidArgumentException, OutOfRangeException, PropertyException,
                   RuntimeException, LogicalErrorException, AccessException, TimeoutException, DynamicCastException>;
TYPED_TEST_SUITE(ExceptionFamily, Family);

TYPED_TEST(ExceptionFamily, IsCaughtByTypeByFamilyAndAsStandardException) {
    EXPECT_THROW(throw TypeParam("d", "f", 1), TypeParam);
    EXPECT_THROW(throw TypeParam("d", "f", 1), GenericException);
    EXPECT_THROW(throw TypeParam("d", "f", 1), std::exception);
}

TEST(Exception, CarriesFormattedTextAndSourcePositionThroughCopies) {
    const unsigned int line = __LINE__ + 1;
    const GenericException original = RUNTIME_EXCEPTION("Device '%s': %d of %d (0x%08X)", "cam", 2, 3, 0xE1018006u);
    const GenericException copy(original);
    EXPECT_STREQ("Device 'cam': 2 of 3 (0xE1018006)", copy.GetDescription());
    EXPECT_STREQ(__FILE__, copy.GetSourceFileName());
    EXPECT_EQ(line, copy.GetSourceLine());
    EXPECT_THAT(copy.what(), HasSubstr(copy.GetDescription()));
    EXPECT_THAT(copy.what(), HasSubstr(__FILE__));
    EXPECT_THAT(copy.what(), HasSubstr("RuntimeException"));
}

TEST(Exception, KeepsLongTextsAndPercentSignsInArguments) {
    const std::string longText(5000, 'x');
    EXPECT_EQ(longText + "%n%s", LOGICAL_ERROR_EXCEPTION("%s%s", longText.c_str(), "%n%s").GetDescription());
    EXPECT_STREQ("", GenericException(nullptr, nullptr, 0).GetDescription());
}

std::string Format(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::string text = FormatV(format, arguments);
    va_end(arguments);
    return text;
}

TEST(Format, TakesBothSpellingsOfNarrowText) {
    EXPECT_EQ("a b", Format("%hs %s", "a", "b"));
    EXPECT_EQ("", Format(nullptr));
}

} // namespace
