// The real program on a real X server, with real keys: what a window system delivers within a few milliseconds.

#include "support/Leaks.h"
#include "support/Site.h"
#include "support/TestFolder.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <iostream>
#include <optional>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace testnet;
using namespace std::chrono_literals;

namespace {

constexpr int Patience_ms = 20000;

/// A program in the background, ended with the object.
class Program {
public:
    explicit Program(std::vector<std::string> arguments) {
        std::vector<char *> argv;
        for (std::string &argument : arguments)
            argv.push_back(argument.data());
        argv.push_back(nullptr);
        if (posix_spawnp(&m_Id, argv[0], nullptr, nullptr, argv.data(), environ) != 0)
            throw std::runtime_error("cannot start " + arguments[0]);
    }
    ~Program() {
        if (m_Id != 0)
            end(SIGKILL);
    }
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    /// \returns how it ended, as waitpid tells.
    int end(int signal) {
        int status = 0;
        kill(m_Id, signal);
        waitpid(m_Id, &status, 0);
        m_Id = 0;
        return status;
    }

private:
    pid_t m_Id = 0;
};

/// A desktop with the tool's window, behind whose adapter are cameras 1 and 2.
class RealKeys : public testing::Test {
protected:
    void SetUp() override {
        const bool isThere = system("command -v Xvfb openbox xdotool >/dev/null") == 0;
        const char *ci = getenv("CI");
        if (!isThere && (ci == nullptr || strcmp(ci, "true") != 0))
            GTEST_SKIP() << "needs Xvfb, openbox and xdotool";
        ASSERT_TRUE(isThere) << "needs Xvfb, openbox and xdotool";
        startDesktop();
    }

    void startDesktop() {
        for (const char *folder : {"HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"})
            setenv(folder, (m_Folder / "home").c_str(), 1);
        setenv("QT_QPA_PLATFORM", "xcb", 1);
        int ready[2];
        ASSERT_EQ(0, pipe(ready));
        m_Server.emplace(std::vector<std::string>{"Xvfb", "-displayfd", std::to_string(ready[1]), "-screen", "0",
                                                  "1024x768x24", "-nolisten", "tcp"});
        close(ready[1]);
        std::FILE *const answer = fdopen(ready[0], "r");
        int number = 0;
        ASSERT_EQ(1, std::fscanf(answer, "%d", &number));
        std::fclose(answer);
        setenv("DISPLAY", (":" + std::to_string(number)).c_str(), 1);
        m_Manager.emplace(std::vector<std::string>{"openbox"});
    }

    void openWith(const std::string &settings) {
        nic0.emplace("nic0", "192.168.10.1/24",
                     std::vector{cameraAt(1, "192.168.10.21/24", ",dhcp=192.168.10.140/24" + settings),
                                 cameraAt(2, "192.168.10.22/24", ",dhcp=192.168.10.141/24" + settings)});
        m_Tool.emplace(std::vector<std::string>{LANVANE_PROGRAM});
        xdotool("search --sync --onlyvisible --name 'Ostra Lanvane' >/dev/null"); // it gets the focus as it appears
        awaitRefresh();
    }
    /// Until the cameras were probed and the list is shown.
    void awaitRefresh() {
        EXPECT_TRUE(eventually([this] { return status(1).requests[TAG_READREG_CMD] > 0; }, Patience_ms));
        std::this_thread::sleep_for(1s);
    }
    void press(const std::string &keys) {
        xdotool("key --delay 0 " + keys);
        std::this_thread::sleep_for(50ms);
    }
    /// Into the address field of the selected camera.
    void type(const std::string &address) {
        press("alt+i ctrl+a");
        xdotool("type --delay 1 " + address);
    }
    camsim::CameraStatus status(unsigned number) const { return nic0->cameras.status(camera(number).mac); }

    std::optional<Site> nic0;
    std::optional<Program> m_Tool;

private:
    static void xdotool(const std::string &command) { EXPECT_EQ(0, system(("timeout 10 xdotool " + command).c_str())); }

    TestFolder m_Folder;
    std::optional<Program> m_Server, m_Manager;
};

TEST_F(RealKeys, ASaveIsForTheCameraAndTheEntriesOfItsKey) {
    openWith("");
    press("Down alt+d ctrl+s Down");
    EXPECT_TRUE(eventually([this] { return nic0->addressOf(1) == "192.168.10.140"; }, Patience_ms));
    std::this_thread::sleep_for(4s); // the tool looks for it every 2 s
    EXPECT_EQ(0u, status(2).ipCycles);

    press("Down alt+a ctrl+s Up"); // the list is where it was
    EXPECT_TRUE(eventually([this] { return status(2).ipEnabled == 4u; }, Patience_ms));
    std::this_thread::sleep_for(4s);
    EXPECT_EQ(1u, status(1).ipCycles);

    press("Up alt+t");
    type("192.168.10.61");
    press("ctrl+s Escape");
    EXPECT_TRUE(eventually([this] { return nic0->addressOf(1) == "192.168.10.61"; }, Patience_ms));
}

TEST_F(RealKeys, ASignalInTheMiddleOfASaveGivesTheCameraBack) {
    openWith(",vendor-config=error,xml=none");
    press("Down");
    type("192.168.10.51");
    nic0->cameras.setFaults(camera(1).mac, camsim::parseFaults("delay=50"));
    press("ctrl+s");
    ASSERT_TRUE(eventually([this] { return status(1).holder.has_value(); }, Patience_ms));
    EXPECT_TRUE(eventually(
        [this] { return nic0->cameras.readRegister(camera(1).mac, GEV_REG_HEARTBEAT_TIMEOUT) == 12000; }, Patience_ms));
    const int ended = m_Tool->end(SIGTERM);
    EXPECT_TRUE(WIFSIGNALED(ended) && WTERMSIG(ended) == SIGTERM);
    EXPECT_FALSE(status(1).holder);
}

} // namespace
