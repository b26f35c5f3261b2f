#include "Program.h"
#include "support/Leaks.h"

#include "support/SocketAddress.h"

#include <filesystem>
#include <thread>
#include <unistd.h>

using namespace testnet;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

std::string text(const nlohmann::json &json) { return json.is_string() ? json.get<std::string>() : json.dump(); }

TEST_F(Program, ListsWhatIsThere) {
    start({cameraAt(4, "10.9.8.8/16"), cameraAt(1, "192.168.10.21/24", ",name=left"), cameraAt(2, "10.9.8.7/16"),
           cameraAt(3, "192.168.10.23/24", ",held-by=192.168.10.200:5555,name=a\x1b[31m\xff")});
    const Finished list = run("list --json");
    ASSERT_EQ(0, list.exitCode) << list.error;
    const auto &cameras = list.json["cameras"];
    ASSERT_EQ(4U, cameras.size());
    std::vector<std::string> seen;
    for (const auto &camera : cameras)
        seen.push_back(text(camera["mac"]) + " " + text(camera["address"]) + " " + text(camera["status"]));
    EXPECT_THAT(seen, testing::ElementsAre(
                          "02:5A:E3:00:00:01 192.168.10.21 ok", "02:5A:E3:00:00:02 10.9.8.7 not-reachable",
                          "02:5A:E3:00:00:03 192.168.10.23 in-use", "02:5A:E3:00:00:04 10.9.8.8 not-reachable"));
    EXPECT_EQ("192.168.10.21", cameras[0]["stored"]["address"]);
    EXPECT_EQ("nic0", cameras[0]["adapters"][0]);

    EXPECT_THAT(run("list").out, AllOf(HasSubstr("left"), HasSubstr("a[31m?"), Not(HasSubstr("\x1b"))));
    EXPECT_THAT(run("show LEFT").error, HasSubstr("no camera"));
    EXPECT_THAT(run("show left").out, HasSubstr("02:5A:E3:00:00:01"));
    EXPECT_EQ(0U, run("list --json --adapter lo").json["cameras"].size());
    EXPECT_EQ(2, run("list --adapter nic9").exitCode);

    const Finished doctor = run("doctor --json");
    EXPECT_EQ(10, doctor.exitCode);
    EXPECT_EQ("foreign-subnet 02:5A:E3:00:00:02",
              text(doctor.json["findings"][0]["code"]) + " " + text(doctor.json["findings"][0]["camera"]));
}

/// Nothing that is refused, unclear or a dry run changes a camera.
TEST_F(Program, RefusesAndPredicts) {
    start({cameraAt(1, "192.168.10.21/24", ",name=twin"),
           cameraAt(2, "192.168.10.22/24", ",name=twin,options=persistent+lla"),
           cameraAt(3, "192.168.10.23/24", ",held-by=192.168.10.200:5555")});
    addDevice("192.168.10.40");
    const struct {
        const char *arguments;
        int exitCode;
        const char *says;
    } rows[] = {
        {"set 025ae3000009 dhcp", 3, "There is no camera"},
        {"set twin dhcp", 3, "02:5A:E3:00:00:02"},
        {"set 02-5a-e3-00-00-03 dhcp", 4, "controlled by another application"},
        {"force 025AE3000003 192.168.10.77", 4, "controlled by another application"},
        {"set 192.168.10.22 dhcp", 4, "does not support DHCP"},
        {"set 192.168.10.21 static 192.168.10.1", 4, "address of this computer"},
        {"set 192.168.10.21 static 192.168.10.22", 4, "02:5A:E3:00:00:02"},
        {"set 192.168.10.21 static 10.0.0.5/8", 4, "outside the subnet"},
        {"set 192.168.10.21 static 192.168.10.40 --dry-run", 4, "Another device"},
        {"force 192.168.10.21 192.168.10.40", 4, "Another device"},
        {"force 025ae3000009 192.168.10.40/24", 4, "Another device"},
        {"force 192.168.10.21 127.0.0.1", 4, "loopback"},
        {"set 192.168.10.21 static 192.168.10.21", 0, ""},
        {"set 192.168.10.21 dhcp --dry-run", 11, ""},
        {"force 192.168.10.21 192.168.10.77 --dry-run", 11, ""},
        {"restart 192.168.10.21 --dry-run", 11, ""},
        {"name 192.168.10.21 twin", 0, ""},
        {"name 192.168.10.21 other --dry-run", 11, ""},
        {"rescue 192.168.10.21 --dry-run", 11, ""},
        {"rescue --all", 0, ""},
        {"restart 192.168.10.21 --timeout nan", 2, "not in [1 - 3600]"},
        {"watch --interval nan", 2, "not in [1 - 86400]"},
    };
    for (const auto &row : rows) {
        const Finished done = run(std::string(row.arguments) + " --json");
        EXPECT_EQ(row.exitCode, done.exitCode) << row.arguments << "\n" << done.out;
        EXPECT_THAT(done.json["error"].dump(), HasSubstr(row.says)) << row.arguments;
    }
    for (const unsigned number : {1U, 2U, 3U}) {
        const camsim::CameraStatus now = status(number);
        EXPECT_EQ("192.168.10.2" + std::to_string(number), site->addressOf(number));
        EXPECT_EQ(number == 3 ? "" : "twin", now.userName);
    }
}

TEST_F(Program, ChangesAndVerifies) {
    start({cameraAt(1, "192.168.10.21/24"), cameraAt(2, "192.168.10.22/24", ",vendor-config=not-implemented"),
           cameraAt(3, "192.168.10.23/16")});
    const struct {
        const char *arguments, *after, *path;
    } rows[] = {
        {"set 192.168.10.21 static 192.168.10.31 --gateway 192.168.10.254",
         "static 192.168.10.31 255.255.255.0 192.168.10.254", "broadcast"},
        {"set 192.168.10.22 static 192.168.10.32", "static 192.168.10.32 255.255.255.0 null", "unicast"},
        {"name 192.168.10.31 left", "static 192.168.10.31 255.255.255.0 192.168.10.254", "unicast"},
        {"set left auto", "auto", "broadcast"},
        {"force left 192.168.10.41", "auto 192.168.10.41", "force"},
        {"restart left", "auto", "force"},
        {"rescue 192.168.10.23", "static 192.168.10.23 255.255.255.0", "broadcast"}, // only its mask is wrong
    };
    for (const auto &row : rows) {
        const Finished done = run(std::string(row.arguments) + " --json");
        ASSERT_EQ(0, done.exitCode) << row.arguments << "\n" << done.out;
        const auto &change = done.json["changes"][0];
        const auto &after = change["after"];
        EXPECT_THAT(text(after["mode"]) + " " + text(after["address"]) + " " + text(after["mask"]) + " " +
                        text(after["gateway"]),
                    testing::StartsWith(row.after))
            << row.arguments;
        EXPECT_EQ(row.path, text(change["path"])) << row.arguments;
        EXPECT_TRUE(change["changed"]) << row.arguments;
        EXPECT_TRUE(change["verified"].is_string()) << row.arguments;
    }
    EXPECT_EQ("left", status(1).userName);
    EXPECT_EQ("192.168.10.32", site->addressOf(2));
}

TEST_F(Program, RescuesEveryLostCamera) {
    start({cameraAt(1, "10.1.2.21/16"), cameraAt(2, "10.1.2.22/16", ",vendor-config=not-implemented"),
           cameraAt(3, "192.168.10.23/24"), cameraAt(4, "192.168.10.24/24", ",reachable=no")});
    EXPECT_EQ(1, run("rescue 192.168.10.24 --json").exitCode); // nothing helps
    site->cameras.setReachable(camera(4).mac, true);
    EXPECT_EQ(4, run("rescue --all --json").exitCode); // nobody to ask
    EXPECT_EQ("10.1.2.21", site->addressOf(1));
    const Finished rescued = run("rescue --all --yes --json");
    EXPECT_EQ(0, rescued.exitCode) << rescued.out;
    EXPECT_EQ(2U, rescued.json["changes"].size());
    EXPECT_EQ("192.168.10.21 192.168.10.22", site->addressOf(1) + " " + site->addressOf(2));
    EXPECT_EQ(0U, run("list --json").json["findings"].size());
}

TEST_F(Program, SaysWhatIsNotConfirmed) {
    EXPECT_EQ(4, run("force 025AE3000001 192.168.10.31/24 --json").exitCode); // there is no adapter
    start({cameraAt(1, "192.168.10.21/24", ",silence=3600000")});
    const Finished lost = run("set 192.168.10.21 static 192.168.10.31 --timeout 4 --json");
    EXPECT_EQ(5, lost.exitCode) << lost.out;
    EXPECT_THAT(text(lost.json["changes"][0]["error"]), HasSubstr("did not come back"));
    EXPECT_TRUE(lost.json["changes"][0]["after"].is_null());
}

TEST_F(Program, EndsAtASafePointOrAtOnce) {
    start({cameraAt(1, "192.168.10.21/24", ",silence=3600000"), cameraAt(2, "192.168.10.22/24", ",reachable=no"),
           cameraAt(3, "192.168.10.23/24", ",vendor-config=silent")}); // the vendor command waits for 3 s
    const auto journal = [&] { return TestFolder::Read(folder / "state/ostra-lanvane/changes.jsonl").size(); };
    // In the middle: of a search after 300 ms, of a change when the journal has it.
    const auto beginToStop = [&](const std::string &arguments, int signal, bool isChange = true) {
        const std::size_t before = journal();
        const pid_t process = begin(arguments);
        EXPECT_TRUE(!isChange || eventually([&] { return journal() != before; }, 30000));
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        kill(process, signal);
        return process;
    };
    const Finished searching = end(beginToStop("doctor --json", SIGINT, false));
    EXPECT_EQ(130, searching.exitCode) << searching.out;
    EXPECT_EQ(130, searching.json["error"]["code"]);

    const Finished waiting = end(beginToStop("set 192.168.10.21 static 192.168.10.31 --json", SIGINT));
    ASSERT_EQ(130, waiting.exitCode) << waiting.out;
    EXPECT_THAT(waiting.error, HasSubstr("next safe point"));
    EXPECT_EQ("02:5A:E3:00:00:01", text(waiting.json["changes"][0]["camera"]));

    std::ofstream(folder / "plan.csv") << "camera,address\n192.168.10.23,192.168.10.33\n";
    for (const std::string &change : {std::string("set 192.168.10.23 static 192.168.10.33"),
                                      "plan apply --yes " + (folder / "plan.csv").string()}) {
        const pid_t process = beginToStop(change, SIGTERM);
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        kill(process, SIGTERM);
        const Finished stopped = end(process);
        EXPECT_EQ(130, stopped.exitCode);
        EXPECT_THAT(stopped.error, HasSubstr("camera 02:5A:E3:00:00:03"));
    }
}

TEST_F(Program, FinishesForAReaderThatIsGone) {
    start({cameraAt(1, "192.168.10.21/24")});
    EXPECT_EQ(0, std::system(LANVANECTL " set 192.168.10.21 static 192.168.10.31 | true"));
    EXPECT_EQ("192.168.10.31", site->addressOf(1));
    EXPECT_EQ(0, std::system(LANVANECTL " list >&-")); // nor does a file get what it prints
    EXPECT_THAT(TestFolder::Read(folder / "state/ostra-lanvane/trace.log"), Not(HasSubstr("ADAPTER")));
}

/// Cameras whose answers the kernel drops are seen by the listener and rescued, with the host's settings as they are.
TEST_F(Program, RescuesWhatTheHostHides) {
    start({cameraAt(1, "10.1.2.21/16")});
    const std::string listener = folder / "lanvane-listen";
    std::filesystem::copy_file(LISTENER, listener);
    const auto shell = [](const std::string &command) { ASSERT_EQ(0, std::system(command.c_str())) << command; };
    // A search waits 100 ms for the listener to start, which is too short for it on a busy machine.
    const auto runUntil = [this](const char *list, const std::string &arguments) {
        Finished done = run(arguments);
        for (int tries = 0; tries < 5 && done.json[list].empty(); ++tries)
            done = run(arguments);
        return done;
    };
    const auto rescueInstead = [&](unsigned number, const std::string &timeout_s) {
        site->cameras.removeCamera(camera(number - 1).mac);
        const std::string digit = std::to_string(number);
        site->cameras.addCamera(cameraAt(number, "10.1.2.2" + digit + "/16"));
        Finished rescued = runUntil("changes", "rescue --all --yes --json --timeout " + timeout_s);
        EXPECT_EQ("192.168.10.2" + digit, site->addressOf(number)) << rescued.out;
        return rescued;
    };
    const std::string chain = "add chain inet f c { type filter hook input priority 0; ";
    shell("setcap cap_net_raw=p " + listener);
    shell("sysctl -qw net.ipv4.conf.nic0.rp_filter=1");
    EXPECT_EQ(0U, run("list --json").json["cameras"].size());

    setenv("PATH", (listener.substr(0, listener.rfind('/')) + ":" + std::getenv("PATH")).c_str(), 1);
    const Finished seen = runUntil("cameras", "list --json");
    ASSERT_EQ(1U, seen.json["cameras"].size());
    EXPECT_TRUE(seen.json["cameras"][0]["hidden"]);
    std::ofstream(folder / "plan.csv") << "camera,mode,address\n025AE3000001,static,192.168.10.31\n";
    const Finished planned = runUntil("changes", "plan apply --yes --json " + (folder / "plan.csv").string());
    EXPECT_EQ(4, planned.exitCode);
    EXPECT_THAT(planned.json["changes"].dump(), HasSubstr("must be rescued first"));
    const Finished rescued = runUntil("changes", "rescue --all --yes --json");
    EXPECT_EQ(0, rescued.exitCode) << rescued.out;
    EXPECT_EQ("192.168.10.21", site->addressOf(1));

    // Answers to broadcasts do not pass a firewall that lets in what was asked for, answers to unicast do.
    shell("sysctl -qw net.ipv4.conf.nic0.rp_filter=0");
    shell("nft 'add table inet f; " + chain + "policy drop; }; add rule inet f c ct state established,related accept'");
    EXPECT_EQ(0, rescueInstead(2, "10").exitCode);

    // Where a firewall drops everything that cameras say, nobody can tell, and the remedy is named.
    shell("nft 'delete table inet f; add table inet f; " + chain + "}; add rule inet f c udp sport 3956 drop'");
    const Finished unheard = rescueInstead(3, "4");
    EXPECT_EQ(5, unheard.exitCode) << unheard.out;
    EXPECT_THAT(unheard.json["findings"].dump(), AllOf(HasSubstr("answers-blocked"), HasSubstr("nft")));
}

TEST_F(Program, ChangesNeitherOfTwoCamerasWithOneMac) {
    start({cameraAt(1, "192.168.10.21/24")});
    const Site twin("nic1", "192.168.11.1/24", {cameraAt(1, "192.168.11.21/24")});
    for (const char *change : {"set 025AE3000001 dhcp", "force 025AE3000001 192.168.10.77", "rescue 025AE3000001",
                               "name 025AE3000001 x", "restart 025AE3000001"}) {
        const Finished done = run(std::string(change) + " --json");
        EXPECT_EQ(4, done.exitCode) << change << done.out;
        EXPECT_THAT(text(done.json["error"]["text"]), HasSubstr("same MAC address"));
    }
}

TEST_F(Program, NamesTheProcessThatHoldsACamera) {
    start({cameraAt(1, "192.168.10.21/24"), cameraAt(2, "10.1.2.22/16")});
    const int holder = ::socket(AF_INET, SOCK_DGRAM, 0);
    ASSERT_EQ(0, ::bind(holder, SocketAddress("192.168.10.1", 45678), sizeof(sockaddr_in)));
    site->cameras.setHolder(camera(1).mac, camsim::Holder{{camsim::Ipv4::parse("192.168.10.1"), 45678}});
    const auto shown = run("list --json").json["cameras"][0]["holder"];
    close(holder);
    EXPECT_EQ("192.168.10.1 45678 " + std::to_string(getpid()),
              text(shown["address"]) + " " + shown["port"].dump() + " " + shown["process"]["id"].dump());
}

/// As if behind a router: no broadcast reaches it.
TEST_F(Program, AsksACameraByItsAddress) {
    start({cameraAt(1, "192.168.10.21/24")});
    site->cameras.setFaults(camera(1).mac, camsim::parseFaults("loss-to-camera=100,commands=discovery,limit=1"));
    EXPECT_EQ(1U, run("list --json --ask 192.168.10.21").json["cameras"].size());
}

} // namespace
