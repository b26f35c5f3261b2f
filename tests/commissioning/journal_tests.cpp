#include "commissioning/CameraLock.h"
#include "commissioning/Journal.h"
#include "support/TestFolder.h"

#include <algorithm>
#include <atomic>
#include <gmock/gmock.h>
#include <set>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace commissioning;
using testing::IsEmpty;

namespace {

constexpr char Mac[] = "025AE3000001";

JournalEntry anEntry() {
    JournalEntry entry;
    entry.mac = Mac;
    entry.what = "set";
    entry.plan = "p";
    entry.before = {7, {1, 2, 3}, StoredAddresses{4, 5, 6}, "a\"\xff\n"};
    entry.wanted = {Mode::Static, 0xC0A80A15, 0xFFFFFF00, 0, "b"};
    return entry;
}

class JournalFile : public testing::Test {
protected:
    std::string write(Fate fate = Fate::Done) {
        JournalEntry entry = anEntry();
        journal.begin(&entry);
        entry.fate = fate;
        entry.after = Snapshot{5, {7, 8, 9}, {}, ""};
        if (fate != Fate::Open)
            journal.end(entry);
        return entry.id;
    }
    static int waitFor(pid_t process) {
        int status = -1;
        waitpid(process, &status, 0);
        return status;
    }

    TestFolder folder;
    const std::string path = folder / "new/state/changes.jsonl";
    Journal journal{path};
};

TEST_F(JournalFile, ReadsWhatItWroteAndIsPrivate) {
    EXPECT_THAT(journal.read().entries, IsEmpty());
    const std::string id = write();
    write(Fate::Open);
    const auto [entries, unreadable] = journal.read();
    ASSERT_EQ(2U, entries.size());
    EXPECT_THAT(unreadable, IsEmpty());
    const JournalEntry &entry = entries[0];
    EXPECT_EQ(id + "p025AE3000001set", entry.id + entry.plan + entry.mac + entry.what);
    EXPECT_TRUE(entry.wanted == anEntry().wanted);
    EXPECT_EQ("a\"\uFFFD\n", entry.before.name);
    EXPECT_EQ(7U + 3 + 6, entry.before.word + entry.before.current.gateway + entry.before.stored->gateway);
    EXPECT_EQ(9U, entry.after->current.gateway);
    EXPECT_FALSE(entry.after->stored.has_value());
    EXPECT_EQ("24 Z", std::to_string(entry.time.size()) + " " + entry.time.back());
    EXPECT_TRUE(entry.fate == Fate::Done && entries[1].fate == Fate::Open && entry.id < entries[1].id);

    struct stat file {
    }, made{};
    ASSERT_EQ(0, stat(path.c_str(), &file) | stat((folder / "new").c_str(), &made));
    EXPECT_EQ(0600U, file.st_mode & 0777U);
    EXPECT_EQ(0700U, made.st_mode & 0777U);
}

/// Wherever a power loss cuts a line, the next one is whole.
TEST_F(JournalFile, ALineCutAnywhereCostsThatLineOnly) {
    write();
    const std::string whole = TestFolder::Read(path);
    const std::size_t begin = whole.find('\n') + 1;
    for (std::size_t length = 0; length < whole.size(); ++length) {
        std::ofstream(path) << whole.substr(0, length);
        const bool isCut = length != 0 && length + 1 != begin && length != begin && length + 1 != whole.size();
        const std::string id = write(Fate::Open);
        const auto [entries, unreadable] = journal.read();
        ASSERT_EQ(id, entries.empty() ? "" : entries.back().id) << length;
        ASSERT_EQ(isCut ? 1U : 0U, unreadable.size()) << length;
        ASSERT_EQ(length + 1 >= begin ? 2U : 1U, entries.size()) << length;
    }
}

TEST_F(JournalFile, SeveralProcessesAndThreadsMayWrite) {
    constexpr int Each = 125;
    const auto writeMany = [&] {
        for (int i = 0; i < Each; ++i)
            write();
    };
    std::array<pid_t, 2> processes{};
    for (pid_t &process : processes) {
        process = fork();
        if (process != 0)
            continue;
        std::thread other(writeMany);
        writeMany();
        other.join();
        _exit(0);
    }
    for (const pid_t process : processes)
        EXPECT_EQ(0, waitFor(process));
    const auto [entries, unreadable] = journal.read();
    std::set<std::string> ids;
    for (const JournalEntry &entry : entries) {
        ids.insert(entry.id);
        EXPECT_EQ(Fate::Done, entry.fate);
    }
    EXPECT_EQ(4U * Each, ids.size());
    EXPECT_THAT(unreadable, IsEmpty());
}

TEST_F(JournalFile, WhateverStandsInItIsReadOrReported) {
    write();
    const std::string whole = TestFolder::Read(path);
    const std::string begin = whole.substr(0, whole.find('\n'));
    const auto with = [&](const char *part, const std::string &other) {
        std::string line = begin;
        return line.replace(line.find(part), std::string(part).size(), other);
    };
    const struct {
        std::string line;
        bool isEntry;
    } rows[] = {
        {with("{", "{\"later\":[1,{}],"), true},
        {with("\"word\":7", "\"word\":4294967295"), true},
        {with("\"word\":7", "\"word\":4294967296"), false},
        {with("\"word\":7", "\"word\":-1"), false},
        {with("\"word\":7", "\"word\":7.5"), false},
        {with("\"word\":7", "\"word\":1e999"), false},
        {with("\"word\":7", "\"word\":\"7\""), false},
        {with("02:5A", "02:5"), false},
        {with("\"static\"", "\"magic\""), false},
        {with("0.0.0.1", "0.0.0.256"), false},
        {with("\"set\"", "\"" + std::string(70000, 'x') + "\""), false},
        {with("{", ""), false},
        {std::string(60000, '['), false},
        {R"({"end":"nobody","fate":"done","path":"none","after":null,"text":""})", false},
        {"null", false},
        {std::string("\0\xff", 2), false},
    };
    std::string text;
    std::vector<std::size_t> expected;
    for (const auto &row : rows) {
        text += row.line + "\n";
        if (!row.isEntry)
            expected.push_back(static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')));
    }
    const auto [entries, unreadable] = readJournal(text);
    EXPECT_EQ(expected, unreadable);
    EXPECT_EQ(std::size(rows) - expected.size(), entries.size());
}

std::string busyText() {
    try {
        const CameraLock lock("02-5a-e3-00-00-01");
    } catch (const CameraBusy &busy) {
        return busy.what();
    }
    return "";
}

TEST_F(JournalFile, ALockNamesItsHolderAndEndsWithIt) {
    std::array<int, 2> ready{};
    ASSERT_EQ(0, pipe(ready.data()));
    const pid_t holder = fork();
    if (holder == 0) {
        const CameraLock lock(Mac);
        // A program that it runs does not keep the lock.
        const char *const words[] = {"sleep", "30", nullptr};
        pid_t child = 0;
        posix_spawn(&child, "/bin/sleep", nullptr, nullptr, const_cast<char **>(words), environ);
        EXPECT_EQ(sizeof child, ::write(ready[1], &child, sizeof child));
        pause();
    }
    pid_t child = 0;
    ASSERT_EQ(sizeof child, ::read(ready[0], &child, sizeof child));
    EXPECT_EQ("The camera is being changed by journal_tests (process " + std::to_string(holder) + ").", busyText());
    const CameraLock other("025AE3000002");
    kill(holder, SIGKILL);
    waitFor(holder);
    EXPECT_EQ("", busyText());
    EXPECT_EQ("", busyText());
    kill(child, SIGKILL);
}

TEST_F(JournalFile, ALockHasOneHolder) {
    std::atomic<int> inside{0}, taken{0}, wrong{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 300; ++round) {
                try {
                    const CameraLock lock(Mac);
                    wrong += inside++ != 0 ? 1 : 0;
                    ++taken;
                    --inside;
                } catch (const CameraBusy &busy) {
                    wrong += busy.holder().id != getpid() && busy.holder().id != 0 ? 1 : 0;
                }
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(0, wrong);
    EXPECT_GT(taken, 0);
}

} // namespace
