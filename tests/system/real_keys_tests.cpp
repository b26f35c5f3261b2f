// The real program on a real X server, with real keys: what a window system delivers within a few milliseconds.

#include "RealDisplay.h"
#include "support/Leaks.h"
#include "support/Site.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <thread>

using namespace testnet;
using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::Not;

namespace {

constexpr int Patience_ms = 20000;

/// The tool's window, behind whose adapter are cameras 1 and 2, on a display of its own.
class RealWindow : public testing::Test {
protected:
    void SetUp() override {
        if (!RealDisplay::isThere() && !RealDisplay::mustBeThere())
            GTEST_SKIP() << RealDisplay::Needs;
        ASSERT_TRUE(RealDisplay::isThere()) << RealDisplay::Needs;
    }

    void start(const std::string &settings) {
        nic0.emplace("nic0", "192.168.10.1/24",
                     std::vector{cameraAt(1, "192.168.10.21/24", ",dhcp=192.168.10.140/24" + settings),
                                 cameraAt(2, "192.168.10.22/24", ",dhcp=192.168.10.141/24" + settings)});
        m_Tool.emplace(std::vector<std::string>{LANVANE_PROGRAM});
    }
    /// Until the cameras were probed, nothing more is asked, and the list is shown.
    void awaitRefresh() const {
        const auto asked = [this] { return status(1).requests[TAG_READREG_CMD] + status(2).requests[TAG_READREG_CMD]; };
        EXPECT_TRUE(eventually([&] { return asked() > 1; }, Patience_ms));
        for (std::size_t before = 0; before != asked(); std::this_thread::sleep_for(1500ms))
            before = asked();
    }
    camsim::CameraStatus status(unsigned number) const { return nic0->cameras.status(camera(number).mac); }

    std::optional<Site> nic0;
    std::optional<Program> m_Tool;
};

class RealKeys : public RealWindow {
protected:
    void openWith(const std::string &settings) {
        m_Display.emplace();
        start(settings);
        RealDisplay::xdotool("search --sync --onlyvisible --name 'Ostra Lanvane' >/dev/null"); // it gets the focus
        awaitRefresh();
        RealDisplay::xdotool("search --onlyvisible --name 'Ostra Lanvane' windowactivate --sync"); // after the wait box
    }
    static void press(const std::string &keys) {
        EXPECT_TRUE(RealDisplay::xdotool("key --delay 0 " + keys));
        std::this_thread::sleep_for(50ms);
    }
    /// Into the address field of the selected camera.
    static void type(const std::string &address) {
        press("alt+i ctrl+a");
        EXPECT_TRUE(RealDisplay::xdotool("type --delay 1 " + address));
    }

private:
    std::optional<RealDisplay> m_Display;
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

/// Of the buffers that a client has shown, by what it told its compositor.
int buffersShown(const std::string &protocol) {
    int count = 0;
    for (std::size_t at = 0; (at = protocol.find(".attach(wl_buffer@", at)) != std::string::npos; ++at)
        ++count;
    return count;
}

TEST_F(RealWindow, StartsPaintsAndEndsOnWayland) {
    const TestFolder folder;
    setenv("XDG_RUNTIME_DIR", (folder / "").c_str(), 1);
    for (const char *kind : {"HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"})
        setenv(kind, (folder / "home").c_str(), 1);
    const Program compositor(
        {"sh", "-c", "exec weston --backend=headless-backend.so --socket=wayland-test 2>/dev/null"});
    ASSERT_TRUE(eventually([&] { return std::filesystem::exists(folder / "wayland-test"); }, Patience_ms));
    setenv("WAYLAND_DISPLAY", "wayland-test", 1);
    setenv("WAYLAND_DEBUG", "client", 1);
    setenv("QT_QPA_PLATFORM", "wayland", 1);
    testing::internal::CaptureStderr();
    start("");
    awaitRefresh();
    EXPECT_TRUE(WIFSIGNALED(m_Tool->end(SIGTERM)));
    const std::string protocol = testing::internal::GetCapturedStderr();
    EXPECT_THAT(protocol, HasSubstr("set_title(\"Ostra Lanvane 64-Bit\")"));
    EXPECT_GE(buffersShown(protocol), 2) << protocol; // the window, and the list in it
    EXPECT_THAT(protocol, Not(HasSubstr(".error(")));
}

} // namespace
