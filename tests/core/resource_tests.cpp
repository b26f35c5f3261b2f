#include "MinimalCorvo/ResourceHelper.h"

#include <gmock/gmock.h>

#include <dlfcn.h>

#include <cstring>

namespace {

using namespace Resource;

std::size_t size = 99;

bool IsLoaded(const char *library) { return dlopen(library, RTLD_LAZY | RTLD_NOLOAD) != nullptr; }

template <class Action> std::string ErrorStreamOf(Action action) {
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

TEST(Resource, EmbeddedDocumentsAreXmlWithoutTheirTerminatingZero) {
    for (const char *name :
         {"GigEEventParams", "GigEStreamParams", "GigETLParams", "GigEImplParams", "DefaultTransportLayerParams"}) {
        const auto *text = static_cast<const char *>(GetResourceData(name, nullptr, &size));
        ASSERT_NE(nullptr, text) << name;
        EXPECT_EQ(std::strlen(text), size);
        EXPECT_THAT(text, testing::HasSubstr(std::string("ModelName=\"") + name + '"'));
        EXPECT_EQ(text, GetResourceString(name, nullptr, &size));
        EXPECT_EQ(std::strlen(text) + 1, size);
        EXPECT_FALSE(FreeResource(text));
    }
    EXPECT_EQ(nullptr, GetResourceData("gigetlparams", nullptr, &size));
    EXPECT_EQ(0u, size);
    EXPECT_EQ(nullptr, GetResourceString("GigETLParam", nullptr, nullptr));
    EXPECT_EQ(nullptr, GetResourceData("GigETLParams", nullptr, nullptr));
}

TEST(Resource, ComesFromALibraryUntilItIsFreed) {
    const void *first = GetResourceData("ends with zero", RESOURCE_LIBRARY, &size);
    EXPECT_EQ(3u, size);
    const char *second = GetResourceString("ends with zero", RESOURCE_LIBRARY, nullptr);
    EXPECT_TRUE(FreeResource(first));
    EXPECT_STREQ("abc", second); // each fetch keeps the library open
    EXPECT_TRUE(FreeResource(second));
    EXPECT_FALSE(FreeResource(second));
    EXPECT_FALSE(IsLoaded(RESOURCE_LIBRARY));
}

TEST(Resource, TellsWhyALibraryGivesNothing) {
    const struct {
        const char *file, *errors;
    } cases[] = {{"/no/such.so", "^dlopen '/no/such.so' failed: /no/such.so"},
                 {LIBRARY_WITHOUT_RESOURCES, "^dlsym: [^\n]+\nSymbol 'LoadResourceData' not found\n$"},
                 {RESOURCE_LIBRARY, "^$"}};
    for (const auto &c : cases) {
        size = 99;
        EXPECT_THAT(ErrorStreamOf([&] { EXPECT_EQ(nullptr, GetResourceData("unknown", c.file, &size)); }),
                    testing::ContainsRegex(c.errors));
        EXPECT_EQ(0u, size);
        EXPECT_FALSE(IsLoaded(c.file));
    }
    EXPECT_EQ(std::string(511, 'x') + "\n", ErrorStreamOf([] { Trace("%s", std::string(600, 'x').c_str()); }));
}

} // namespace
