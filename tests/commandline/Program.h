#pragma once

#include "support/Site.h"
#include "support/TestFolder.h"

#include <nlohmann/json.hpp>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <spawn.h>
#include <sys/wait.h>

/// What a run of lanvanectl left.
struct Finished {
    int exitCode = -1;
    std::string out, error;
    nlohmann::json json; ///< null unless it printed an object
};

/// Runs lanvanectl on adapter nic0 at 192.168.10.1/24.
class Program : public testing::Test {
protected:
    Program() {
        folder.TakeLog();
        setenv("XDG_STATE_HOME", (folder / "state").c_str(), 1);
    }
    void TearDown() override {
        if (!objects.empty()) {
            EXPECT_EQ(0, std::system((VALIDATE " " SCHEMA + objects).c_str()));
        }
    }

    void start(const std::vector<camsim::CameraConfig> &cameras) {
        site.emplace("nic0", "192.168.10.1/24", cameras);
        // That nobody has an address is known sooner; three times that long a busy machine may take to answer.
        std::ofstream("/proc/sys/net/ipv4/neigh/nic0/retrans_time_ms") << 400;
    }

    /// Something that is no camera.
    void addDevice(const std::string &address) {
        // Or the cameras' interface would answer for it as well, and its address would be one that a camera has left.
        site->adapter.cameraSide().run([] { std::ofstream("/proc/sys/net/ipv4/conf/all/arp_ignore") << 1; });
        for (const std::string &step : {std::string("link add other link cam type macvlan mode bridge"),
                                        std::string("link set other up"), "address add " + address + "/24 dev other"})
            site->adapter.cameraSide().ip(step);
    }

    pid_t begin(const std::string &arguments) {
        const std::string command = "exec " LANVANECTL " </dev/null " + arguments + " >" + (folder / "out").string() +
                                    " 2>" + (folder / "error").string();
        const char *const words[] = {"sh", "-c", command.c_str(), nullptr};
        pid_t process = 0;
        EXPECT_EQ(0, posix_spawn(&process, "/bin/sh", nullptr, nullptr, const_cast<char **>(words), environ));
        return process;
    }

    Finished end(pid_t process) {
        int status = 0;
        waitpid(process, &status, 0);
        Finished run{WIFEXITED(status) ? WEXITSTATUS(status) : -1, TestFolder::Read(folder / "out"),
                     TestFolder::Read(folder / "error"),
                     nlohmann::json::parse(TestFolder::Read(folder / "out"), nullptr, false)};
        if (run.json.is_object()) {
            const std::string copy = folder / ("object" + std::to_string(++count) + ".json").c_str();
            std::ofstream(copy) << run.out;
            objects += " " + copy;
        }
        return run;
    }

    Finished run(const std::string &arguments) { return end(begin(arguments)); }
    camsim::CameraStatus status(unsigned number) { return site->cameras.status(testnet::camera(number).mac); }

    TestFolder folder;
    std::optional<testnet::Site> site;

private:
    std::string objects;
    int count = 0;
};
