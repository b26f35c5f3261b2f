#include "Program.h"
#include "support/Leaks.h"

#include <cstdlib>
#include <random>
#include <thread>

using namespace testnet;

namespace {

/// Ends a plan at a moment that nobody chose, again and again: LANVANE_PLAN_KILLS times.
class KilledPlans : public Program {
protected:
    static constexpr unsigned Count = 20;

    /// What each camera has stored, and whether it uses it.
    std::vector<std::string> stored() {
        std::vector<std::string> all;
        for (unsigned i = 1; i <= Count; ++i) {
            const camsim::CameraStatus now = status(i);
            all.push_back(now.persistent.address.toString() + " " + std::to_string(now.ipEnabled) + " " +
                          site->addressOf(i));
        }
        return all;
    }
    /// Two that swap, three that rotate, one to DHCP, the others to new addresses.
    std::string planText() const {
        std::string text = "camera,mode,address\n1,,192.168.10.22\n2,,192.168.10.21\n3,,192.168.10.24\n"
                           "4,,192.168.10.25\n5,,192.168.10.23\n6,dhcp,\n";
        for (unsigned i = 7; i <= Count; ++i)
            text += std::to_string(i) + ",,192.168.10." + std::to_string(100 + i) + "\n";
        return text;
    }
    /// Those of the journal that the plan may have changed.
    std::set<std::string> journalled() {
        const Finished log = run("plan log --json");
        EXPECT_EQ(0, log.exitCode) << log.error;
        std::set<std::string> macs;
        for (const auto &entry : log.json["log"])
            macs.insert(entry["camera"]);
        return macs;
    }
    /// \param time from the first entry of the journal on.
    void killAfter(std::chrono::microseconds time) {
        const pid_t process = begin("plan apply " + (folder / "plan.csv").string() + " --yes --timeout 4");
        EXPECT_TRUE(eventually([&] { return std::filesystem::exists(folder / "state"); }, 30000));
        std::this_thread::sleep_for(time);
        kill(process, SIGKILL);
        waitpid(process, nullptr, 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(400)); // cameras that were restarted are back
    }
};

TEST_F(KilledPlans, AreTakenBack) {
    const char *const kills = std::getenv("LANVANE_PLAN_KILLS");
    const int rounds = kills ? std::atoi(kills) : 4;
    const unsigned seed = std::random_device()();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    std::vector<camsim::CameraConfig> cameras;
    for (unsigned i = 1; i <= Count; ++i)
        cameras.push_back(cameraAt(i, "192.168.10." + std::to_string(20 + i) + "/24", ",xml=none,silence=100"));
    start(cameras);
    std::ofstream(folder / "plan.csv") << planText();
    const std::vector<std::string> before = stored();
    int halves = 0;
    for (int round = 0; round < rounds; ++round) {
        SCOPED_TRACE(testing::Message() << "round " << round);
        std::filesystem::remove_all(folder / "state");
        killAfter(std::chrono::microseconds(random() % 2500000));
        const std::vector<std::string> left = stored();
        const std::set<std::string> known = journalled();
        for (unsigned i = 1; i <= Count; ++i)
            EXPECT_TRUE(left[i - 1] == before[i - 1] || known.count(camera(i).mac.toString()) != 0) << i;
        halves += left == before ? 0 : 1;
        const Finished undo = run("plan undo --yes --timeout 10");
        EXPECT_EQ(before, stored()) << undo.out << undo.error;
        if (HasFailure())
            break;
    }
    std::printf("%d of %d plans were ended half-way or later\n", halves, rounds);
    EXPECT_GT(halves, 0);
}

} // namespace
