#include "Program.h"
#include "commissioning/AddressText.h"
#include "support/Leaks.h"

#include <cctype>
#include <filesystem>
#include <sys/stat.h>

using namespace testnet;
using testing::HasSubstr;
using testing::Not;

namespace {

/// A watch that runs.
class Watching : public Program {
protected:
    void watch(const std::string &options) { m_Process = begin("watch --interval 1 " + options); }
    std::string printed() const { return TestFolder::Read(folder / "out"); }
    void prints(const std::string &text) const {
        const auto isThere = [&] { return printed().find(text) != std::string::npos; };
        EXPECT_TRUE(eventually(isThere, 20000)) << "no " << text << " in\n" << printed();
    }
    Finished stop(int signal = SIGTERM) {
        kill(m_Process, signal);
        return end(m_Process);
    }

private:
    pid_t m_Process = 0;
};

TEST_F(Watching, TellsWhatHappensUntilItIsStopped) {
    start({cameraAt(1, "192.168.10.21/24"), cameraAt(2, "192.168.10.22/24")});
    const std::string plan = folder / "plan.csv", metrics = folder / "lanvane.prom";
    const std::string header = "camera,mode,address,mask,gateway,name\n";
    std::ofstream(plan) << header << "025AE3000001,static,192.168.10.21,,,\n";
    watch("--json --plan " + plan + " --metrics " + metrics);
    prints("\"snapshot\"");
    const std::size_t asked = status(1).requests[TAG_READREG_CMD];
    EXPECT_GT(asked, 0U);
    site->cameras.addCamera(cameraAt(3, "192.168.10.23/24", ",name=\xff\"\\"));
    prints("\"appeared\"");
    site->cameras.removeCamera(camera(2).mac);
    prints("\"vanished\"");
    EXPECT_EQ(asked, status(1).requests[TAG_READREG_CMD]); // for it is as it was
    EXPECT_EQ(0, std::system(LANVANECTL " set 025AE3000001 static 192.168.10.31 >/dev/null"));
    prints("\"drifted\"");
    std::ofstream(plan) << header << "025AE3000001,static,192.168.10.31,,,\n";
    prints("\"back-on-plan\"");
    std::filesystem::remove(plan);
    ASSERT_EQ(0, mkfifo(plan.c_str(), 0600)); // which nobody writes
    prints("plan.csv cannot be read.");       // a plan-problem
    ip("address flush dev nic0");
    prints("\"finding-came\"");
    EXPECT_TRUE(eventually([&] { return TestFolder::Read(metrics).find("\"ok\"} 0") != std::string::npos; }, 20000));
    struct stat entry {};
    EXPECT_EQ(0, stat(metrics.c_str(), &entry));
    EXPECT_EQ(0644U, entry.st_mode & 07777);
    EXPECT_EQ(0, stop().exitCode);
    EXPECT_EQ(0, std::system((VALIDATE " --lines " SCHEMA " " + (folder / "out").string()).c_str()));
}

TEST_F(Watching, EndsForNothingButASignalOrAReaderThatIsGone) {
    start({cameraAt(1, "192.168.10.21/24", ",name=left")});
    watch("--adapter nic9 --metrics " + (folder / "missing/x.prom").string());
    prints("search-failed There is no adapter nic9.");
    const Finished stopped = stop(SIGINT);
    EXPECT_EQ(0, stopped.exitCode);
    EXPECT_THAT(stopped.error, HasSubstr("metrics cannot be written"));
    EXPECT_THAT(stopped.error, Not(HasSubstr("safe point")));
    EXPECT_EQ(0, std::system("(timeout 30 " LANVANECTL " watch --interval 1; test $? = 1) | grep -qm1 left"));
}

using Reporting = Program;

/// The texts of a report, by name.
std::map<std::string, std::string> unzipped(const std::string &path, const std::string &target) {
    EXPECT_EQ(0, std::system(("python3 -m zipfile -e " + path + " " + target).c_str()));
    std::map<std::string, std::string> files;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(target)) {
        if (entry.is_regular_file())
            files[std::filesystem::relative(entry.path(), target)] = TestFolder::Read(entry.path());
    }
    return files;
}

TEST_F(Reporting, GathersWhatHelpsOnce) {
    start({cameraAt(1, "192.168.10.21/24", ",name=left"), cameraAt(2, "10.9.8.7/16"),
           cameraAt(3, "192.168.10.23/24", ",vendor-config=not-implemented,reachable=no")});
    EXPECT_EQ(0, run("name 025AE3000001 Kiln").exitCode);
    const std::string path = folder / "report.zip";
    unsetenv("GENICAM_LOG_CONFIG");
    EXPECT_EQ(path + "x", run("report --json " + path + "x").json["report"]);
    const Finished done = run("report " + path);
    EXPECT_EQ(0, done.exitCode) << done.error;
    EXPECT_THAT(done.out, HasSubstr("findings.txt"));
    struct stat entry {};
    EXPECT_EQ(0, stat(path.c_str(), &entry));
    EXPECT_EQ(0600U, entry.st_mode & 07777);
    auto files = unzipped(path, folder / "all");
    EXPECT_THAT(
        files["cameras/025AE3000001/registers.txt"],
        testing::AllOf(HasSubstr("0x0024 Current IP address:\n    C0 A8 0A 15\n"), HasSubstr("4B 69 6C 6E 00")));
    EXPECT_THAT(files["cameras/025AE3000001/description.xml"], HasSubstr("<RegisterDescription"));
    EXPECT_THAT(files["cameras/025AE3000002/discovery.txt"], HasSubstr(" 0A 09 08 07"));
    EXPECT_EQ(0U, files.count("cameras/025AE3000002/registers.txt"));
    EXPECT_THAT(files["changes.jsonl"], HasSubstr("Kiln"));
    for (const char *name :
         {"inventory.json", "versions.txt", "routes.txt", "sysctls.txt", "counters.txt", "trace.log"})
        EXPECT_FALSE(files[name].empty()) << name;
    EXPECT_THAT(files["findings.txt"], HasSubstr("[foreign-subnet]"));
    EXPECT_THAT(files["README.txt"], HasSubstr("cameras/025AE3000003: "));
    EXPECT_EQ(1, run("report " + path).exitCode); // it is there already
}

/// Whatever tells a camera or this host from others, in any spelling.
TEST_F(Reporting, GivesNobodyAway) {
    const auto withSerial = [](camsim::CameraConfig config, const char *serial) {
        config.serial = serial;
        return config;
    };
    start({withSerial(cameraAt(1, "192.168.10.121/24", ",name=Kiln 4,held-by=192.168.10.200:5555"), "77441"),
           cameraAt(2, "10.99.98.97/16", ",name=static"), cameraAt(3, "192.168.10.121/24"),
           cameraAt(4, "192.168.10.121/24")});
    ip("link add enx025ae3000009 type veth peer name peer");
    const Site twin("nic1", "172.31.77.1/16", {withSerial(cameraAt(1, "172.31.77.88/16"), "66551")});
    ip("route add 203.0.113.0/24 via 192.168.10.254");
    EXPECT_EQ(0, run("report --redact " + (folder / "report.zip").string()).exitCode);
    auto files = unzipped(folder / "report.zip", folder / "some");
    char host[256] = "";
    gethostname(host, sizeof host);
    for (const auto &[name, content] : files) {
        std::string text = content;
        std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::toupper(c); });
        for (const char *secret : {"025AE3", "02:5A:E3", "02-5A-E3", "2,90,227", "5A E3", "192.168.10", "3232238",
                                   "C0A80A", "10.99.9", "172.31.77", "203.0.113", "KILN", "77441", "66551"})
            EXPECT_THAT(text, Not(HasSubstr(secret))) << name;
        EXPECT_THAT(content, Not(HasSubstr(host))) << name;
    }
    EXPECT_EQ(7U, files.size());
    const auto inventory = nlohmann::json::parse(files["inventory.json"]);
    EXPECT_EQ(0, std::system((VALIDATE " " SCHEMA " " + (folder / "some/inventory.json").string()).c_str()));
    // What is the same stays so.
    const std::string mac = inventory["cameras"][2]["mac"], shared = inventory["cameras"][2]["address"];
    EXPECT_THAT(files["findings.txt"], testing::AllOf(HasSubstr("Camera " + mac), HasSubstr(shared)));
    EXPECT_EQ(shared, inventory["cameras"][3]["address"]);
    EXPECT_EQ("static", inventory["cameras"][1]["mode"]);
}

} // namespace
