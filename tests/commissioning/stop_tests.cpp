#include "Operations.h"
#include "commissioning/Diagnosis.h"
#include "commissioning/Saving.h"
#include "gxapi/StopToken.h"

#include <random>

using namespace commissioning;
using namespace testnet;

namespace {

using Clock = std::chrono::steady_clock;

class Stopped : public LayerTest {
protected:
    /// How long a diagnosis goes on after a stop was requested, that long after its begin. \returns none when it had
    /// ended by then.
    static std::optional<Clock::duration> stopAfter(std::chrono::microseconds time) {
        Gx::CStopToken token;
        Clock::time_point requested;
        std::thread stopper([&] {
            std::this_thread::sleep_for(time);
            requested = Clock::now();
            token.RequestStop();
        });
        const Gx::CStopScope scope(&token);
        bool isCancelled = false;
        try {
            diagnose(layer(), {});
        } catch (const Cancelled &) {
            isCancelled = true;
        }
        const Clock::time_point ended = Clock::now();
        stopper.join();
        return isCancelled ? std::optional(ended - requested) : std::nullopt;
    }
};

/// Silent cameras would hold a search for most of a second.
TEST_F(Stopped, SearchesEndSoonAtAnyMoment) {
    std::vector<camsim::CameraConfig> cameras;
    for (unsigned i = 1; i <= 40; ++i)
        cameras.push_back(cameraAt(i, "192.168.10." + std::to_string(10 + i) + "/24", i % 2 ? ",reachable=no" : ""));
    const Site site("nic0", "192.168.10.1/24", cameras);
    const unsigned seed = std::random_device()();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    int cancelled = 0;
    for (int i = 0; i < 12; ++i) {
        const auto late = stopAfter(std::chrono::microseconds(random() % 900000));
        cancelled += late ? 1 : 0;
        EXPECT_LT(late.value_or(Clock::duration()), std::chrono::seconds(2)); // 300 ms, on an idle machine
    }
    EXPECT_GT(cancelled, 0);
    EXPECT_EQ(40u, diagnose(layer()).devices.size()); // what was stopped leaves nothing behind
}

TEST_F(Operations, TwoChangesAtOnceDoNotMeet) {
    start({cameraAt(1, "192.168.10.21/24"), cameraAt(2, "192.168.10.22/24", ",vendor-config=not-implemented")});
    const auto move = [&](unsigned number, const char *ip) {
        Corvo::DeviceInfoList known = devices;
        Connection own;
        const Context alone{layer(), known, own, *this, context().trace, {10, std::chrono::milliseconds(100), 3}};
        return configure(alone, change(number, Mode::Static, ip));
    };
    layer(); // made before there are two threads
    Result second;
    std::thread other([&] { second = move(2, "192.168.10.32"); });
    const Result first = move(1, "192.168.10.31");
    other.join();
    EXPECT_TRUE(first.success) << first.text;
    EXPECT_TRUE(second.success) << second.text;
    EXPECT_EQ("192.168.10.31 192.168.10.32", site->addressOf(1) + " " + site->addressOf(2));
}

} // namespace
