#include "RollingFile.h"

#include "log_test_folder.h"

#include <gmock/gmock.h>

#include <sys/wait.h>
#include <unistd.h>

#include <iterator>
#include <set>

namespace {

using GenICam::RollingFile;

class RollingFileTest : public testing::Test {
protected:
    LogTestFolder folder;
    const std::string path = folder / "new" / "folder" / "trace.log";
};

TEST_F(RollingFileTest, KeepsOneBackupAndNeverOutgrowsTheLimit) {
    RollingFile file(path, 10);
    for (const char *line : {"111\n", "222\n", "333\n", "444\n", "555\n", "longer than ten\n", "666\n"})
        EXPECT_TRUE(file.Append(line));
    EXPECT_EQ("666\n", LogTestFolder::Read(path));
    EXPECT_EQ("longer than ten\n", LogTestFolder::Read(path + ".1"));
    EXPECT_FALSE(std::filesystem::exists(path + ".2"));
}

TEST_F(RollingFileTest, GoesOnInANewFileWhenTheOldOneWasTakenAway) {
    RollingFile file(path, 100);
    EXPECT_TRUE(file.Append("old\n"));
    std::filesystem::remove(path);
    EXPECT_TRUE(file.Append("new\n"));
    EXPECT_EQ("new\n", LogTestFolder::Read(path));
}

TEST_F(RollingFileTest, SaysWhenItCannotWrite) {
    EXPECT_FALSE(RollingFile("/dev/null/folder/trace.log", 10).Append("x"));
    EXPECT_FALSE(RollingFile("/dev/full", 10).Append("x"));
}

constexpr int PROCESSES = 4;
constexpr int LINES = 500;

[[noreturn]] void WriteLines(const std::string &path, int process, std::int64_t maxBytes) {
    RollingFile file(path, maxBytes);
    bool written = true;
    for (int i = 0; i < LINES; ++i)
        written &= file.Append(std::to_string(10000 + process * LINES + i) + "\n");
    _exit(written ? 0 : 1);
}

void WriteFromManyProcesses(const std::string &path) {
    constexpr int BYTES_PER_LINE = 6;
    std::vector<pid_t> children;
    for (int process = 0; process < PROCESSES; ++process) {
        const pid_t child = fork();
        if (child == 0)
            WriteLines(path, process, PROCESSES * LINES * BYTES_PER_LINE * 2 / 3);
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = -1;
        ASSERT_EQ(child, waitpid(child, &status, 0));
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
        std::istringstream text(LogTestFolder::Read(file + ".1") + LogTestFolder::Read(file));
        using Line = std::istream_iterator<std::string>;
        EXPECT_EQ(expected, std::multiset<std::string>(Line(text), Line()));
    }
}

} // namespace
