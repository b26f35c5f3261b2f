#include "MinimalCorvo/TraceLog.h"

#include "Log/CLog.h"
#include "TestFolder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <thread>

// The table of categories is never emptied: every test here relies on running in a process of its own, as CTest does.

namespace {

using namespace tracelog;

class TraceLogTest : public testing::Test {
protected:
    TraceLogTest() {
        folder.TakeLog();
        GenICam::CLog::Initialize();
        LogEnable(true);
    }
    ~TraceLogTest() override { GenICam::CLog::ShutDown(); }

    TestFolder folder;
};

TEST_F(TraceLogTest, NumbersCategoriesByNameIgnoringCaseAndMapsLevels) {
    EXPECT_EQ(0u, LogGetCatID("Corvo.GigE.TL"));
    EXPECT_EQ(1u, LogGetCatID("corvo.base"));
    EXPECT_EQ(0u, LogGetCatID("corvo.gige.tl"));
    EXPECT_EQ(~0UL, LogGetCatID(nullptr));
    EXPECT_EQ(~0UL, LogGetCatID(""));
    for (const unsigned int level : {16u, 32u, 64u, 128u, 256u, 512u, 1000u})
        EXPECT_TRUE(LogTrace(1, level, "%u%s", level, "%"));
    // The last one's priority, "not set", is less urgent than any threshold.
    EXPECT_EQ("DEBUG corvo.base 16%\nINFO corvo.base 32%\nNOTICE corvo.base 64%\nWARN corvo.base 128%\n"
              "ERROR corvo.base 256%\nCRIT corvo.base 512%\n",
              TestFolder::Read(folder / "log"));
}

TEST_F(TraceLogTest, GivesNoIdsAndWritesNothingUnlessEnabled) {
    const unsigned long id = LogGetCatID("c");
    for (const unsigned long invalid : {~0UL, 500UL, id + 1})
        EXPECT_FALSE(LogTrace(invalid, lvError, "x"));
    EXPECT_TRUE(LogEnable(false));
    EXPECT_FALSE(LogTrace(id, lvError, "x"));
    EXPECT_EQ(~0UL, LogGetCatID("c"));
    LogEnable(true);
    EXPECT_TRUE(LogTrace(id, lvError, "again"));
    EXPECT_EQ(id, LogGetCatID("C"));
    EXPECT_EQ("ERROR c again\n", TestFolder::Read(folder / "log"));
}

TEST_F(TraceLogTest, ABudgetBoundsTheLinesOfSeveralThreads) {
    const unsigned long id = LogGetCatID("c");
    {
        LineBudget budget(id, 20);
        std::thread threads[4];
        for (std::thread &thread : threads) {
            thread = std::thread([&] {
                const LineBudget::Use use(budget);
                for (int i = 0; i < 10; ++i)
                    LogTrace(id, lvError, "bounded");
            });
        }
        for (int i = 0; i < 30; ++i)
            LogTrace(id, lvError, "free");
        for (std::thread &thread : threads)
            thread.join();
    }
    const std::string text = TestFolder::Read(folder / "log");
    EXPECT_EQ(20 + 30 + 1, std::count(text.begin(), text.end(), '\n'));
    EXPECT_THAT(text, testing::EndsWith("WARN c 20 further lines were left out.\n"));
}

TEST_F(TraceLogTest, HasRoomFor500Categories) {
    for (unsigned long i = 0; i < 500; ++i)
        ASSERT_EQ(i, LogGetCatID(std::to_string(i).c_str()));
    EXPECT_EQ(~0UL, LogGetCatID("501st"));
    EXPECT_EQ(499u, LogGetCatID("499"));
}

TEST_F(TraceLogTest, HasRoomFor15500BytesOfNames) {
    for (char letter = 'a'; letter < 'a' + 15; ++letter)
        ASSERT_EQ(static_cast<unsigned long>(letter - 'a'), LogGetCatID(std::string(999, letter).c_str()));
    EXPECT_EQ(~0UL, LogGetCatID(std::string(500, 'y').c_str()));
    EXPECT_EQ(15u, LogGetCatID(std::string(499, 'z').c_str()));
    EXPECT_EQ(~0UL, LogGetCatID("x"));
    EXPECT_EQ(15u, LogGetCatID(std::string(499, 'Z').c_str()));
}

} // namespace
