#include "MinimalCorvo/CorvoBase.h"

#include "MinimalCorvo/TraceLog.h"
#include "TestFolder.h"

#include <gmock/gmock.h>

// Initialisation and the id of "corvo.base" are process-wide: every test here relies on a process of its own.

namespace {

using namespace Corvo;
using testing::HasSubstr;

class CorvoBaseTest : public testing::Test {
protected:
    CorvoBaseTest() { folder.TakeDefaultLog(); }
    std::string Trace() const { return folder.DefaultLog(); }
    static bool Logs() { return tracelog::LogTrace(tracelog::LogGetCatID("test"), tracelog::lvError, "line"); }

    TestFolder folder;
};

int handlerCalls = 0;

TEST_F(CorvoBaseTest, NestsLogsTheEndAndStartsAnew) {
    SetTerminationHandler([]() noexcept { ++handlerCalls; });
    CorvoInitialize();
    CorvoInitialize();
    CorvoTerminate(true);
    EXPECT_TRUE(Logs());
    EXPECT_EQ(0, handlerCalls);
    CorvoTerminate(false);
    EXPECT_THAT(Trace(), testing::EndsWith("NOTICE corvo.base: Terminated Corvo for Linux.\n"));
    EXPECT_TRUE(Logs());
    CorvoTerminate(true);
    EXPECT_THAT(Trace(), HasSubstr("INFO   corvo.base: CorvoTerminate called after corvo has already terminated\n"));
    EXPECT_EQ(1, handlerCalls);
    CorvoInitialize();
    CorvoTerminate(true);
    EXPECT_FALSE(Logs());
    CorvoInitialize();
    EXPECT_TRUE(Logs());
    EXPECT_THAT(Trace(), testing::EndsWith("test: line\n"));
}

TEST_F(CorvoBaseTest, LeavesTheLoggingLibraryToAHostThatManagesIt) {
    AddInternalFlags(InternalFlag_HostManagesLogging | InternalFlag_UntilTermination);
    CorvoInitialize();
    EXPECT_TRUE(Logs());
    EXPECT_EQ("", Trace());
    CorvoTerminate(true);
    EXPECT_TRUE(Logs());
    EXPECT_EQ(InternalFlag_HostManagesLogging, GetInternalFlags());
    EXPECT_TRUE(IsInternalFlagSet(InternalFlag_HostManagesLogging | InternalFlag_UntilTermination));
}

} // namespace
