#include "Program.h"

#include "support/SocketAddress.h"

#include <sys/file.h>
#include <thread>
#include <unistd.h>

using namespace testnet;
using testing::HasSubstr;

namespace {

class Undoing : public Program {
protected:
    std::string journal() const { return folder / "state/ostra-lanvane/changes.jsonl"; }
    std::string addresses() const { return site->addressOf(1) + " " + site->addressOf(2); }
};

TEST_F(Undoing, TakesChangesBack) {
    start({cameraAt(1, "192.168.10.21/24", ",name=left"), cameraAt(2, "192.168.10.22/24")});
    std::ofstream(folder / "swap.csv") << "camera,address\n025AE3000001,192.168.10.22\n025AE3000002,192.168.10.21\n";
    const std::string swap = (folder / "swap.csv").string();
    const struct {
        std::string arguments;
        int exitCode;
        const char *addresses, *says;
    } rows[] = {
        {"plan undo --yes", 3, "192.168.10.21 192.168.10.22", "no plan"},
        {"undo left --yes", 3, "192.168.10.21 192.168.10.22", "no change"},
        {"set left static 192.168.10.31 --dry-run", 11, "192.168.10.21 192.168.10.22", ""},
        {"plan log", 0, "192.168.10.21 192.168.10.22", "no changes"},
        {"set left static 192.168.10.31", 0, "192.168.10.31 192.168.10.22", ""},
        {"undo left --dry-run", 11, "192.168.10.31 192.168.10.22", "192.168.10.31/24 -> 192.168.10.21/24"},
        {"undo left", 4, "192.168.10.31 192.168.10.22", "--yes"},
        {"undo left --yes", 0, "192.168.10.21 192.168.10.22", "done"},
        {"undo left --yes", 0, "192.168.10.21 192.168.10.22", "nothing to undo"},
        {"plan apply --yes " + swap, 0, "192.168.10.22 192.168.10.21", "done"},
        {"undo left --yes", 4, "192.168.10.22 192.168.10.21", "02:5A:E3:00:00:02 has the address 192.168.10.21"},
        {"name left right", 0, "192.168.10.22 192.168.10.21", ""},
        {"plan undo --yes", 4, "192.168.10.22 192.168.10.21", "left it: name"},
        {"plan undo --yes --force", 0, "192.168.10.21 192.168.10.22", "left it: name"},
        {"plan undo --yes", 0, "192.168.10.21 192.168.10.22", "nothing to undo"},
        {"plan undo nonsense", 3, "192.168.10.21 192.168.10.22", "no change and no plan 'nonsense'"},
    };
    for (const auto &row : rows) {
        const Finished done = run(row.arguments);
        ASSERT_EQ(row.exitCode, done.exitCode) << row.arguments << "\n" << done.out << done.error;
        EXPECT_EQ(row.addresses, addresses()) << row.arguments;
        EXPECT_THAT(done.out + done.error, HasSubstr(row.says)) << row.arguments;
        const bool helpsForce = std::string(row.says) == "left it: name" && row.exitCode == 4;
        EXPECT_EQ(helpsForce, (done.out + done.error).find("--force") != std::string::npos) << row.arguments;
    }
    EXPECT_EQ("left", status(1).userName);

    std::ofstream(journal(), std::ios::app) << "{\"begin\":\"20\n{\n";
    const Finished log = run("plan log --json");
    EXPECT_THAT(log.error, HasSubstr("lines 15-16 cannot be read"));
    std::string whats;
    for (const auto &entry : log.json["log"])
        whats += entry["what"].get<std::string>() + " " + entry["state"].get<std::string>() + " ";
    EXPECT_EQ("set done undo done plan done plan done name done undo done undo done ", whats);
    EXPECT_THAT(run("plan log").out, HasSubstr("plan " + swap + "  "));
    EXPECT_THAT(run("plan log").out, HasSubstr("2 cameras          2"));

    const int held = open(journal().c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(0, flock(held, LOCK_EX));
    const pid_t waiting = begin("plan log");
    std::this_thread::sleep_for(std::chrono::milliseconds(1200));
    kill(waiting, SIGTERM);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    close(held);
    EXPECT_EQ(130, end(waiting).exitCode);
}

TEST_F(Undoing, RefusesWhatCannotBeJournalled) {
    start({cameraAt(1, "192.168.10.21/24"), cameraAt(2, "192.168.10.22/24")});
    setenv("XDG_STATE_HOME", "/dev/null", 1);
    const Finished refused = run("set 192.168.10.21 dhcp --json");
    EXPECT_EQ(4, refused.exitCode);
    EXPECT_THAT(refused.json["error"]["text"], HasSubstr("/dev/null/ostra-lanvane/changes.jsonl cannot be written"));
    std::ofstream(folder / "plan.csv") << "camera,mode\n025AE3000001,dhcp\n025AE3000002,dhcp\n";
    EXPECT_EQ(4, run("plan apply --yes " + (folder / "plan.csv").string()).exitCode);
    EXPECT_EQ("192.168.10.21", site->addressOf(1));
    EXPECT_EQ(0U, status(1).ipCycles);
}

} // namespace
