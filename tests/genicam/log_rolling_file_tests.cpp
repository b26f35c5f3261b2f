#include "RollingFile.h"

#include "TestFolder.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
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
    EXPECT_EQ(std::filesystem::perms::owner_all,
              std::filesystem::status(std::filesystem::path(path).parent_path()).permissions());
    std::filesystem::remove(path);
    EXPECT_TRUE(file.Append("777\n"));
    EXPECT_EQ("777\n", TestFolder::Read(path));
}

TEST_F(RollingFileTest, SaysWhenItCannotWrite) {
    EXPECT_FALSE(RollingFile("/dev/null/folder/trace.log", 10).Append("x"));
    struct rlimit before {};
    getrlimit(RLIMIT_FSIZE, &before);
    const struct rlimit full { 1, before.rlim_max };
    signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &full);
    EXPECT_FALSE(RollingFile(path, 10).Append("xy"));
    setrlimit(RLIMIT_FSIZE, &before);
}

TEST_F(RollingFileTest, WritesRegularFilesOnly) {
    const std::string pipe = folder / "pipe", link = folder / "link", target = folder / "target";
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    std::ofstream(target) << "precious";
    std::filesystem::create_symlink(target, link);
    for (const std::string &name : {pipe, link, std::string("/dev/null")})
        EXPECT_FALSE(RollingFile(name, 10).Append("x")) << name; // at once, though nobody reads the pipe
    EXPECT_EQ("precious", TestFolder::Read(target));
}

TEST_F(RollingFileTest, DoesNotWaitForALockThatSomebodyKeeps) {
    RollingFile file(path, 10);
    const int other = open(path.c_str(), O_WRONLY);
    ASSERT_EQ(0, flock(other, LOCK_EX));
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 100; ++i)
        EXPECT_TRUE(file.Append("line\n"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
    EXPECT_EQ(500u, TestFolder::Read(path).size()) << "rolled over without the lock";
    close(other);
    EXPECT_TRUE(file.Append("6\n"));
    EXPECT_EQ("6\n", TestFolder::Read(path));
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
