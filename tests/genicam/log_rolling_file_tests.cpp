#include "RollingFile.h"

#include "TestFolder.h"

#include <gmock/gmock.h>

#include <sys/wait.h>
#include <unistd.h>

#include <iterator>
#include <set>

namespace {

using GenICam::RollingFile;

class RollingFileTest : public testing::Test {
protected:
    TestFolder folder;
    const std::string path = folder / "new" / "folder" / "trace.log";
};

TEST_F(RollingFileTest, KeepsOneBackupAndSurvivesLosingItsFile) {
    RollingFile file(path, 10);
    for (const char *line : {"111\n", "222\n", "333\n", "444\n", "555\n", "longer than ten\n", "666\n"})
        EXPECT_TRUE(file.Append(line));
    EXPECT_EQ("666\n", TestFolder::Read(path));
    EXPECT_EQ("longer than ten\n", TestFolder::Read(path + ".1"));
    std::filesystem::remove(path);
    EXPECT_TRUE(file.Append("777\n"));
    EXPECT_EQ("777\n", TestFolder::Read(path));
}

TEST_F(RollingFileTest, SaysWhenItCannotWrite) {
    EXPECT_FALSE(RollingFile("/dev/null/folder/trace.log", 10).Append("x"));
    EXPECT_FALSE(RollingFile("/dev/full", 10).Append("x"));
}

constexpr int PROCESSES = 4;
constexpr int LINES = 500;

[[noreturn]] void WriteLines(const std::string &path, int process) {
    constexpr int BYTES_PER_LINE = 6;
    RollingFile file(path, PROCESSES * LINES * BYTES_PER_LINE * 2 / 3);
    bool written = true;
    for (int i = 0; i < LINES; ++i)
        written &= file.Append(std::to_string(10000 + process * LINES + i) + "\n");
    _exit(written ? 0 : 1);
}

void WriteFromManyProcesses(const std::string &path) {
    for (int process = 0; process < PROCESSES; ++process) {
        if (fork() == 0)
            WriteLines(path, process);
    }
    for (int process = 0; process < PROCESSES; ++process) {
        int status = -1;
        EXPECT_LT(0, wait(&status));
        EXPECT_EQ(0, status);
    }
}

// The limit makes the file roll over once while all processes write: every line must be in the file or its backup.
// Without the locks about every other round fails.
TEST_F(RollingFileTest, LosesNoLineOfProcessesThatRollTheFileOverUnderEachOther) {
    std::multiset<std::string> expected;
    for (int i = 0; i < PROCESSES * LINES; ++i)
        expected.insert(std::to_string(10000 + i));
    for (int round = 0; round < 10; ++round) {
        const std::string file = path + "-" + std::to_string(round);
        WriteFromManyProcesses(file);
        EXPECT_TRUE(std::filesystem::exists(file + ".1"));
        std::istringstream text(TestFolder::Read(file + ".1") + TestFolder::Read(file));
        using Line = std::istream_iterator<std::string>;
        EXPECT_EQ(expected, std::multiset<std::string>(Line(text), Line()));
    }
}

} // namespace
