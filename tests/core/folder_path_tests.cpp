#include "MinimalCorvo/Utilities.h"

#include "Base/GCException.h"

#include <gmock/gmock.h>

#include <filesystem>

// Each path is worked out once per process: every test here relies on running in a process of its own, as CTest does.

namespace {

using namespace Corvo;

struct FolderVariable {
    eFolderType type;
    const char *name, *tooLong;
};
constexpr FolderVariable VARIABLES[] = {
    {ftCorvoDefaultCdfDir, "CORVO_DEFAULT_CDF_DIR", "CorvoTL path too long"},
    {ftCorvoConfigFileRegistry, "CORVO_CONFIG_FILE_REGISTRY_PATH", "CorvoConfigFileRegistry path too long"},
    {ftCorvoTL, "CORVO_TL_PATH", "CorvoTL path too long"}};

auto FailsWith(const std::string &text) {
    return testing::ThrowsMessage<GenICam::RuntimeException>(testing::StartsWith(text + " ("));
}

TEST(FolderPath, IsTheProgramsFolderWithoutVariables) {
    for (const FolderVariable &variable : VARIABLES)
        unsetenv(variable.name);
    const std::string program = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    for (const eFolderType type : {ftCorvoBaseDir, ftCorvoDefaultCdfDir, ftCorvoSharedLib, ftCorvoTL, ftCorvoTLSupport})
        EXPECT_EQ(program, getCorvoFolderPath(type)) << type;
    EXPECT_EQ(program + "//share/corvo/ConfigFileRegistry", getCorvoFolderPath(ftCorvoConfigFileRegistry));
}

TEST(FolderPath, ComesFromItsVariableAndIsWorkedOutOnce) {
    for (const FolderVariable &variable : VARIABLES) {
        setenv(variable.name, "", 1); // set is set, even to nothing
        const char *path = getCorvoFolderPath(variable.type);
        setenv(variable.name, "changed", 1);
        EXPECT_EQ(path, getCorvoFolderPath(variable.type));
        EXPECT_STREQ("", path);
    }
}

TEST(FolderPath, MustFitItsBuffer) {
    for (const FolderVariable &variable : VARIABLES) {
        setenv(variable.name, std::string(4096, 'x').c_str(), 1);
        EXPECT_THAT([&] { getCorvoFolderPath(variable.type); }, FailsWith(variable.tooLong));
        const std::string longest(4095, 'x');
        setenv(variable.name, longest.c_str(), 1);
        EXPECT_EQ(longest, getCorvoFolderPath(variable.type));
    }
}

TEST(FolderPath, RefusesUnknownTypes) {
    EXPECT_THAT([] { getCorvoFolderPath(static_cast<eFolderType>(6)); }, FailsWith("Unknown path type 6"));
}

} // namespace
