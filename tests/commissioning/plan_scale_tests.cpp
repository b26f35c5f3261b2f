#include "Observing.h"
#include "commissioning/PlanApplication.h"

#include <chrono>
#include <cstdlib>

using namespace commissioning;
using namespace testnet;

namespace {

/// A plan for two adapters: behind nic0 all move to another subnet, behind nic1 are a swap, a rotation of three and
/// moves. LANVANE_PLAN_CAMERAS is the number of all cameras, LANVANE_PLAN_SILENCE what a restart takes in ms.
class ManyCameras : public Observing {
protected:
    static unsigned number(const char *variable, unsigned otherwise) {
        const char *const text = std::getenv(variable);
        return text ? static_cast<unsigned>(std::stoul(text)) : otherwise;
    }
    ManyCameras() { ip("address add 10.9.0.1/24 brd + dev nic0"); }

    std::vector<camsim::CameraConfig> behind(unsigned first, const std::string &network) const {
        std::vector<camsim::CameraConfig> cameras;
        for (unsigned i = 0; i < count; ++i)
            cameras.push_back(cameraAt(first + i, network + std::to_string(2 + i) + "/24",
                                       ",xml=none,silence=" + std::to_string(silence_ms)));
        return cameras;
    }
    /// The last byte that the camera at a place gets.
    unsigned target(unsigned place) const {
        constexpr unsigned Exchanged[] = {1, 0, 3, 4, 2};
        return place < 5 ? 2 + Exchanged[place] : 2 + count + place;
    }
    std::string planText() const {
        std::string text = "camera,address\n";
        for (unsigned i = 0; i < count; ++i) {
            text += std::to_string(1 + i) + ",10.9.0." + std::to_string(2 + i) + "\n";
            text += std::to_string(1001 + i) + ",192.168.20." + std::to_string(target(i)) + "\n";
        }
        return text;
    }
    PlanOutcome applyPlan(const std::function<void()> &checked, const std::function<void()> &written) {
        const Inventory inventory = inventoryOf(observe());
        const PlanReview reviewed = review(readPlan(planText()), inventory);
        for (const PlanProblem &problem : reviewed.problems)
            ADD_FAILURE() << problem.text;
        PlanOptions options;
        options.patience = {40, std::chrono::milliseconds(silence_ms), 3}; // a loaded machine may need most of it
        options.progress = [&](PlanPhase phase, std::size_t done, std::size_t all) {
            if (phase == PlanPhase::Writing && done == all && done > 2)
                written();
        };
        checked();
        const auto begin = std::chrono::steady_clock::now();
        PlanOutcome outcome = apply(layer(), reviewed, inventory, nullptr, options);
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
        std::printf("%u cameras, restarts of %u ms: %.1f s\n", 2 * count, silence_ms, time.count());
        EXPECT_EQ("", outcome.error);
        return outcome;
    }
    /// Those whose registers are not those of the plan.
    std::set<unsigned> wrong() const {
        std::set<unsigned> numbers;
        for (unsigned i = 0; i < count; ++i) {
            if (left.addressOf(1 + i) != "10.9.0." + std::to_string(2 + i))
                numbers.insert(1 + i);
            if (right.addressOf(1001 + i) != "192.168.20." + std::to_string(target(i)))
                numbers.insert(1001 + i);
        }
        return numbers;
    }
    static std::set<unsigned> notDone(const PlanOutcome &outcome) {
        std::set<unsigned> numbers;
        for (const PlanRecord &record : outcome.records) {
            const bool isDone = record.state == PlanState::Done;
            EXPECT_EQ(isDone, record.result.success);
            if (!isDone)
                numbers.insert(static_cast<unsigned>(std::stoul(record.change.camera.serial)));
            if (!isDone)
                std::printf("%s: %s\n", record.change.camera.mac.c_str(), record.result.text.c_str());
        }
        return numbers;
    }

    const unsigned count = number("LANVANE_PLAN_CAMERAS", 24) / 2; ///< behind each adapter
    const unsigned silence_ms = number("LANVANE_PLAN_SILENCE", 400);
    Site left{"nic0", "192.168.10.1/24", behind(1, "192.168.10.")};
    Site right{"nic1", "192.168.20.1/24", behind(1001, "192.168.20.")};
};

TEST_F(ManyCameras, AllGetWhatThePlanSays) {
    const PlanOutcome outcome = applyPlan([] {}, [] {});
    EXPECT_EQ(std::set<unsigned>(), notDone(outcome));
    EXPECT_EQ(std::set<unsigned>(), wrong());
    for (const PlanRecord &record : outcome.records)
        EXPECT_EQ(Verification::StoredRead, record.result.verification) << record.change.camera.mac;
}

TEST_F(ManyCameras, LossAndDeathSpoilNobodyElse) {
    const std::set<unsigned> dead{7, 9, 1007, 1009, 1011};
    SCOPED_TRACE(testing::Message() << "seeds " << left.cameras.seed() << " " << right.cameras.seed());
    const auto lose = [&] {
        for (Site *const site : {&left, &right})
            site->cameras.setFaults(camsim::parseFaults("loss-to-camera=10,loss-from-camera=10"));
    };
    const PlanOutcome outcome = applyPlan(lose, [&] {
        for (const unsigned each : dead)
            (each < 1000 ? left : right).cameras.setFaults(camera(each).mac, camsim::parseFaults("silent-after=0"));
    });
    EXPECT_EQ(dead, notDone(outcome));
    for (Site *const site : {&left, &right})
        site->cameras.setFaults({});
    std::set<unsigned> lost = wrong();
    for (const unsigned each : dead)
        lost.erase(each);
    EXPECT_EQ(std::set<unsigned>(), lost);
}

} // namespace
