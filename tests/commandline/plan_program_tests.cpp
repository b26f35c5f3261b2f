#include "Program.h"

using namespace testnet;
using testing::HasSubstr;

namespace {

/// From what is there to a plan, its check, and what becomes of it; a plan that is not wanted so changes nothing.
TEST_F(Program, ChangesCamerasByPlan) {
    start({cameraAt(1, "192.168.10.21/24", ",name=left"), cameraAt(2, "192.168.10.22/24", ",name=a\\,b"),
           cameraAt(3, "192.168.10.23/24", ",held-by=192.168.10.200:5555")});
    const std::string there = folder / "there.csv";
    const std::string wanted = folder / "wanted.csv";
    std::ofstream(wanted) << "name;camera;address\nl;left;192.168.10.22\n;192.168.10.22;192.168.10.31\n";
    std::ofstream(folder / "bad.csv") << "camera,address\nleft,192.168.10.23\n025AE3000003,192.168.10.33\n";
    // Another device has .40; nobody has .41 any more, though the host remembers somebody.
    addDevice("192.168.10.40");
    std::ofstream("/proc/sys/net/ipv4/neigh/nic0/delay_first_probe_time") << 1;
    ip("neighbour add 192.168.10.41 lladdr 02:00:00:00:00:41 nud stale dev nic0");
    std::ofstream(folder / "taken.csv") << "camera,address\nleft,192.168.10.40\n192.168.10.22,192.168.10.41\n";
    std::ofstream(folder / "given-up.csv") << "camera,address\n192.168.10.31,192.168.10.21\n";
    const struct {
        std::string arguments;
        int exitCode;
        std::string says, states;
    } rows[] = {
        {"export " + there, 0, "null", ""},
        {"export " + there, 4, "--force replaces it", ""},
        {"export --force " + there, 0, "null", ""},
        {"check " + there, 0, "null", "unchanged unchanged unchanged "},
        {"apply " + there, 0, "null", "unchanged unchanged unchanged "}, // nothing to ask for
        {"check " + wanted, 11, "null", "would-change would-change "},
        {"apply - --dry-run <" + wanted, 11, "null", "would-change would-change "},
        {"apply " + wanted, 4, "--yes is needed", "not-begun not-begun "},
        {"check --adapter lo " + wanted, 4, "problems: 2", "refused refused "},
        {"apply --yes " + (folder / "bad.csv").string(), 4, "problems: 1", "refused refused "},
        {"apply --yes " + (folder / "taken.csv").string(), 4, "problems: 1", "refused refused "},
        {"check nowhere.csv", 2, "cannot be read", ""},
        {"check .", 2, "it is no file", ""},
        {"export", 2, "needs a FILE", ""},
        {"apply --yes " + wanted, 0, "null", "done done "},
        {"check " + wanted, 4, "problems: 2", "refused "}, // its cameras have other names and addresses now
        {"check " + (folder / "given-up.csv").string(), 11, "null", "would-change "},
    };
    for (const auto &row : rows) {
        const Finished done = run("plan --json " + row.arguments);
        EXPECT_EQ(row.exitCode, done.exitCode) << row.arguments << "\n" << done.out;
        EXPECT_THAT(done.json["error"].dump(), HasSubstr(row.says)) << row.arguments;
        std::string states;
        for (const auto &change : done.json["changes"])
            states += change["state"].get<std::string>() + " ";
        EXPECT_EQ(row.states, states) << row.arguments;
        const bool isApplied = &row >= std::end(rows) - 3;
        EXPECT_EQ(isApplied ? "192.168.10.22 192.168.10.31" : "192.168.10.21 192.168.10.22",
                  site->addressOf(1) + " " + site->addressOf(2))
            << row.arguments;
    }
    EXPECT_EQ("l", status(1).userName);
    EXPECT_EQ(run("plan export").out, "camera,mode,address,mask,gateway,name\n"
                                      "02:5A:E3:00:00:01,static,192.168.10.22,255.255.255.0,0.0.0.0,l\n"
                                      "02:5A:E3:00:00:02,static,192.168.10.31,255.255.255.0,0.0.0.0,\"a,b\"\n"
                                      "02:5A:E3:00:00:03,static,192.168.10.23,255.255.255.0,0.0.0.0,\n");
    const Finished check = run("plan check " + (folder / "bad.csv").string());
    EXPECT_THAT(check.out, HasSubstr(folder / "bad.csv:2:1: There is no camera"));
    EXPECT_THAT(check.out, HasSubstr("192.168.10.23/24 -> 192.168.10.33/24"));
}

} // namespace
