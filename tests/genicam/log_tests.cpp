#include "Log/CLog.h"

#include "log_test_folder.h"

#include <gmock/gmock.h>

#include <thread>

namespace {

using namespace GenICam;
using testing::HasSubstr;
using testing::Not;

class LogTest : public testing::Test {
protected:
    LogTest() {
        setenv("XDG_STATE_HOME", (folder / "state").c_str(), 1);
        unsetenv("GENICAM_LOG_CONFIG");
    }
    ~LogTest() override { CLog::ShutDown(); }

    void UseConfigFile(const std::string &text) const {
        const std::string path = folder / "log.properties";
        std::ofstream(path) << text;
        setenv("GENICAM_LOG_CONFIG", path.c_str(), 1);
    }
    std::string Trace() const { return LogTestFolder::Read(folder / "state" / "ostra-lanvane" / "trace.log"); }

    LogTestFolder folder;
};

TEST_F(LogTest, WritesLinesOfPriorityInfoAndAboveByDefault) {
    CLog::Initialize();
    CLogger &logger = *CLog::GetLogger("corvo.base");
    logger.Log(LogPriority_Info, "shown %d", 1);
    logger.Log(LogPriority_Debug, "hidden");
    logger.Log(LogPriority_NotSet, "hidden");
    EXPECT_THAT(Trace(), testing::ContainsRegex("^[0-9-]+ [0-9:.]+ \\[[0-9]+\\] INFO +corvo.base: shown 1\n$"));
    EXPECT_EQ(&logger, CLog::GetLogger("corvo.base"));
}

TEST_F(LogTest, FormatsOnceAndBlanksControlCharacters) {
    CLog::Initialize();
    CLog::GetLogger("a")->Log(LogPriority_Error, "%s|%s|%s\n", "100%s%n", "x\r\ny\x1B[2J\x7F", "\xC2\x9BzÄ");
    EXPECT_THAT(Trace(), HasSubstr(": 100%s%n|x  y [2J |  zÄ\n"));
    CLog::GetLogger("a")->Log(LogPriority_Error, "%s", "\n\n");
    EXPECT_THAT(Trace(), testing::EndsWith("a: \n"));
}

TEST_F(LogTest, IsSilentAfterShutDownAndWritesAgainAfterANewStart) {
    CLog::Initialize();
    CLogger &logger = *CLog::GetLogger("a");
    CLog::ShutDown();
    logger.Log(LogPriority_Error, "silent");
    CLog::Initialize();
    CLog::Initialize();
    logger.Log(LogPriority_Error, "once");
    EXPECT_THAT(Trace(), Not(HasSubstr("silent")));
    EXPECT_THAT(Trace(), testing::ContainsRegex("^[^\n]*once\n$"));
}

TEST_F(LogTest, FollowsThePropertyFileOfTheEnvironment) {
    const std::string target = folder / "own.log";
    UseConfigFile("log4j.rootCategory=WARN, A\n"
                  "log4j.category.loud=DEBUG\n"
                  "log4j.appender.A=org.apache.log4j.FileAppender\n"
                  "log4j.appender.A.fileName=" +
                  target +
                  "\n"
                  "log4j.appender.A.layout=org.apache.log4j.PatternLayout\n"
                  "log4j.appender.A.layout.ConversionPattern=%c %m%n\n");
    CLog::Initialize();
    CLog::GetLogger("quiet")->Log(LogPriority_Info, "hidden");
    CLog::GetLogger("loud.child")->Log(LogPriority_Debug, "shown");
    EXPECT_EQ("loud.child shown\n", LogTestFolder::Read(target));
    EXPECT_EQ("", Trace());
}

TEST_F(LogTest, FallsBackToTheDefaultFileWhenThePropertyFileIsUnusable) {
    setenv("GENICAM_LOG_CONFIG", "/dev/null/no-such-file", 1);
    CLog::Initialize();
    CLog::GetLogger("a")->Log(LogPriority_Info, "one");
    UseConfigFile("log4j.rootCategory=WARN, A\nlog4j.appender.A=NoSuchAppender\n");
    CLog::Initialize();
    CLog::GetLogger("a")->Log(LogPriority_Info, "two");
    EXPECT_THAT(Trace(), HasSubstr("GENICAM_LOG_CONFIG: cannot use '/dev/null/no-such-file'"));
    EXPECT_THAT(Trace(), HasSubstr("a: one\n"));
    EXPECT_THAT(Trace(), HasSubstr("a: two\n"));
}

TEST_F(LogTest, GoesWithoutAFileWhenTheFolderIsUnusable) {
    setenv("XDG_STATE_HOME", "/dev/null", 1);
    CLog::Initialize();
    CLog::GetLogger("a")->Log(LogPriority_Error, "nowhere");
    unsetenv("XDG_STATE_HOME");
    setenv("HOME", (folder / "home").c_str(), 1);
    CLog::Initialize();
    CLog::GetLogger("a")->Log(LogPriority_Error, "home");
    const std::string path = folder / "home" / ".local/state/ostra-lanvane/trace.log";
    EXPECT_THAT(LogTestFolder::Read(path), testing::EndsWith("home\n"));
}

TEST_F(LogTest, MayBeSetUpAndShutDownWhileOtherThreadsLog) {
    auto log = [] {
        for (int i = 0; i < 500; ++i)
            CLog::GetLogger("a.b")->Log(LogPriority_Error, "line %d", i);
    };
    std::thread first(log);
    std::thread second(log);
    for (int i = 0; i < 20; ++i) {
        CLog::Initialize();
        CLog::ShutDown();
    }
    first.join();
    second.join();
    CLog::Initialize();
    CLog::GetLogger("a.b")->Log(LogPriority_Error, "last");
    EXPECT_THAT(Trace(), HasSubstr("last\n"));
}

} // namespace
