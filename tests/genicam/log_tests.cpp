#include "Log/CLog.h"

#include "TestFolder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <thread>

namespace {

using namespace GenICam;
using testing::HasSubstr;

class LogTest : public testing::Test {
protected:
    LogTest() { folder.TakeDefaultLog(); }
    ~LogTest() override { CLog::ShutDown(); }

    std::string Trace() const { return folder.DefaultLog(); }

    TestFolder folder;
};

TEST_F(LogTest, WritesCleanLinesOfPriorityInfoAndAboveByDefault) {
    CLog::Initialize();
    CLogger &logger = *CLog::GetLogger("corvo.base");
    logger.Log(LogPriority_Debug, "hidden");
    logger.Log(LogPriority_NotSet, "hidden");
    logger.Log(LogPriority_Info, "%s|%s|%s\n", "100%s%n", "x\r\ny\x1B[2J\x7F", "\xC2\x9BzÄ");
    EXPECT_THAT(Trace(), testing::ContainsRegex("^[0-9-]+ [0-9:.]+ \\[[0-9]+\\] INFO +corvo.base: 100%s%n\\|x  y"));
    EXPECT_THAT(Trace(), testing::EndsWith("|x  y [2J |  zÄ\n"));
}

TEST_F(LogTest, CountsRepeatedLines) {
    CLog::Initialize();
    for (const char *text : {"flood", "other", "flood"}) {
        for (int i = 0; i < 1000; ++i)
            CLog::GetLogger("a")->Log(LogPriority_Error, "%s", text);
    }
    CLog::GetLogger("b")->Log(LogPriority_Error, "flood");
    CLog::GetLogger("b")->Log(LogPriority_Warning, "flood");
    CLog::GetLogger("b")->Log(LogPriority_Warning, "flood");
    CLog::ShutDown();
    const std::string trace = Trace();
    EXPECT_EQ(9, std::count(trace.begin(), trace.end(), '\n')) << trace;
    EXPECT_THAT(trace, HasSubstr("a: other\n"));
    EXPECT_THAT(trace, HasSubstr("a: last message repeated 999 times\n"));
    EXPECT_THAT(trace, testing::EndsWith("b: last message repeated 1 times\n"));
}

TEST_F(LogTest, IsSilentAfterShutDownAndWritesOnceAfterANewStart) {
    CLog::Initialize();
    CLogger &logger = *CLog::GetLogger("a");
    CLog::ShutDown();
    logger.Log(LogPriority_Error, "silent");
    CLog::Initialize();
    CLog::Initialize();
    logger.Log(LogPriority_Error, "once");
    EXPECT_THAT(Trace(), testing::ContainsRegex("^[^\n]*once\n$"));
}

TEST_F(LogTest, FallsBackToTheDefaultFileWhenThePropertyFileIsUnusable) {
    const std::string broken = folder / "broken.properties";
    std::ofstream(broken) << "log4j.rootCategory=WARN, A\nlog4j.appender.A=NoSuchAppender\n";
    for (const std::string &config : {broken, std::string("/dev/null/no-such-file")}) {
        setenv("GENICAM_LOG_CONFIG", config.c_str(), 1);
        CLog::Initialize();
        CLog::GetLogger("a")->Log(LogPriority_Info, "to the default");
        EXPECT_THAT(Trace(), HasSubstr("GENICAM_LOG_CONFIG: cannot use '" + config + "'"));
        EXPECT_THAT(Trace(), testing::EndsWith("a: to the default\n"));
    }
}

TEST_F(LogTest, ForgetsWhatAnEarlierPropertyFileSaid) {
    const std::string config = folder / "config";
    std::ofstream(config) << "log4j.rootCategory=FATAL\nlog4j.category.quiet=FATAL\nlog4j.additivity.quiet=false\n";
    setenv("GENICAM_LOG_CONFIG", config.c_str(), 1);
    CLog::Initialize();
    CLog::GetLogger("quiet")->Log(LogPriority_Error, "hidden");
    unsetenv("GENICAM_LOG_CONFIG");
    CLog::Initialize();
    CLog::GetLogger("quiet")->Log(LogPriority_Info, "written");
    EXPECT_THAT(Trace(), testing::ContainsRegex("^[^\n]*quiet: written\n$"));
}

TEST_F(LogTest, GoesWithoutAFileWhenTheFolderIsUnusable) {
    setenv("XDG_STATE_HOME", "/dev/null", 1);
    CLog::Initialize();
    CLog::GetLogger("a")->Log(LogPriority_Error, "nowhere");
    std::filesystem::current_path(folder / "");
    setenv("XDG_STATE_HOME", "relative", 1);
    unsetenv("HOME");
    CLog::Initialize();
    CLog::GetLogger("a")->Log(LogPriority_Error, "nowhere either");
    setenv("HOME", (folder / "home").c_str(), 1);
    CLog::Initialize();
    CLog::GetLogger("a")->Log(LogPriority_Error, "home");
    const std::string path = folder / "home" / ".local/state/ostra-lanvane/trace.log";
    EXPECT_THAT(TestFolder::Read(path), testing::ContainsRegex("^[^\n]*home\n$"));
}

TEST_F(LogTest, MayBeSetUpAndShutDownWhileOtherThreadsLog) {
    auto log = [] {
        for (int i = 0; i < 500; ++i)
            CLog::GetLogger("a.b")->Log(LogPriority_Error, "line %d", i);
    };
    std::thread threads[] = {std::thread(log), std::thread(log)};
    for (int i = 0; i < 20; ++i) {
        CLog::Initialize();
        CLog::ShutDown();
    }
    for (std::thread &thread : threads)
        thread.join();
    CLog::Initialize();
    CLog::GetLogger("a.b")->Log(LogPriority_Error, "last");
    EXPECT_THAT(Trace(), testing::EndsWith("last\n"));
}

} // namespace
