#include "Observing.h"
#include "commissioning/CameraLock.h"
#include "commissioning/PlanApplication.h"

#include <atomic>
#include <regex>
#include <thread>

using namespace commissioning;
using namespace testnet;
using testing::HasSubstr;

namespace {

using Act = std::function<void(Site &)>;

/// What happens besides, and is told.
struct Besides {
    std::string text = {}; ///< in that of some camera, or in the remark
    Act checked = {};      ///< between the check and the plan
    Act written = {};      ///< after all writing, before the restarts
    Act ended = {};        ///< before the cameras are asked
    unsigned maxFailures = 3;
    std::size_t stopAfter = 1000; ///< cameras written one by one
};

/// A plan from its text to the cameras' registers. ".21" is 192.168.10.21.
class AppliedPlans : public Observing {
protected:
    static std::string stateText(PlanState state) {
        return std::array{"unchanged", "done", "failed", "rolled-back", "unconfirmed", "not-begun"}.at(
            static_cast<std::size_t>(state));
    }
    static std::string inFull(const std::string &text) {
        return std::regex_replace(text, std::regex("(^|[ ,])\\.(\\d)"), "$01192.168.10.$2");
    }
    static std::string shown(const Site &site, const PlanOutcome &outcome) {
        std::string text = outcome.error;
        for (const PlanRecord &record : outcome.records) {
            const auto mac = camsim::MacAddress::parse(record.change.camera.mac);
            const camsim::CameraStatus now = site.cameras.status(mac);
            text += (text.empty() ? "" : "; ") + stateText(record.state) + " " +
                    (now.current ? now.current->address.toString() : "nowhere");
            if (!now.current || now.persistent.address != now.current->address || now.ipEnabled != 5)
                text += " stored " + now.persistent.address.toString() + " word " + std::to_string(now.ipEnabled);
            EXPECT_TRUE(!now.holder || record.state == PlanState::NotBegun) << record.change.camera.mac;
        }
        return text;
    }
    /// What the journal says of each camera must be what the outcome says.
    static std::string journalText(const Journal &journal, const PlanOutcome &outcome) {
        static constexpr Fate fates[] = {Fate::Open, Fate::Done, Fate::Failed, Fate::RolledBack, Fate::Unconfirmed};
        std::map<std::string, Fate> known;
        std::string text;
        for (const JournalEntry &entry : journal.read().entries) {
            text += "\n" + entry.what + " " + entry.mac;
            EXPECT_EQ(outcome.id, entry.plan);
            if (entry.what == "plan")
                known[entry.mac] = entry.fate;
        }
        for (const PlanRecord &record : outcome.records) {
            const auto own = known.find(record.change.camera.mac);
            EXPECT_EQ(record.state == PlanState::NotBegun, own == known.end());
            if (own != known.end()) {
                EXPECT_EQ(fates[static_cast<std::size_t>(record.state)], own->second) << own->first;
            }
        }
        return text;
    }
    PlanOutcome applied(const char *name, const std::string &plan, const Besides &besides, Site &site) {
        const Inventory inventory = inventoryOf(observe());
        const std::string lines = std::regex_replace(inFull(plan), std::regex(" "), "\n");
        const PlanReview reviewed = review(readPlan("camera,address,mode,name\n" + lines), inventory);
        for (const PlanProblem &problem : reviewed.problems)
            ADD_FAILURE() << problem.text;
        if (besides.checked)
            besides.checked(site);
        PlanOptions options;
        options.patience = {4, std::chrono::milliseconds(300), 3};
        options.maxFailures = besides.maxFailures;
        std::atomic<std::size_t> written{0};
        options.progress = [&](PlanPhase phase, std::size_t done, std::size_t all) {
            written += phase == PlanPhase::Writing ? 1 : 0;
            if (phase == PlanPhase::Writing && done == all && besides.written)
                besides.written(site);
        };
        options.isStopRequested = [&] { return written >= besides.stopAfter; };
        options.atOnce = besides.stopAfter < 1000 ? 1 : 32;
        Journal journal(folder / name);
        PlanOutcome outcome = apply(layer(), reviewed, inventory, &journal, options);
        std::string texts = outcome.remark + journalText(journal, outcome);
        for (const PlanRecord &record : outcome.records) {
            texts += "\n" + record.result.text;
            EXPECT_EQ(record.state == PlanState::Done, record.result.success) << record.result.text;
        }
        EXPECT_THAT(texts, HasSubstr(inFull(besides.text)));
        return outcome;
    }
    /// \param settings of cameras 1, 2, ...: ".21/24,key=value" \param plan lines without heading: "1,.31 2,.32,dhcp"
    void check(const char *name, const std::vector<std::string> &settings, const std::string &plan,
               const std::string &expected, const Besides &besides = {}) {
        SCOPED_TRACE(name);
        std::vector<camsim::CameraConfig> cameras;
        for (const std::string &each : settings) {
            const std::string full = inFull(each);
            const std::size_t comma = std::min(full.find(','), full.size());
            cameras.push_back(cameraAt(static_cast<unsigned>(cameras.size() + 1), full.substr(0, comma),
                                       full.substr(comma) + ",xml=none"));
        }
        Site site("nic0", "192.168.10.1/24", cameras);
        ip("address add 10.9.0.1/24 brd + dev nic0");
        const PlanOutcome outcome = applied(name, plan, besides, site);
        if (besides.ended)
            besides.ended(site);
        EXPECT_EQ(inFull(expected), shown(site, outcome));
    }
    /// It is switched off and on, and has what it has stored.
    static Act revive(unsigned number) {
        return [=](Site &site) {
            site.cameras.setFaults(camera(number).mac, {});
            site.cameras.powerCycle(camera(number).mac);
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
        };
    }
    static Act spoil(unsigned number, const std::string &faults) {
        return [=](Site &site) { site.cameras.setFaults(camera(number).mac, camsim::parseFaults(faults)); };
    }
};

const char *const A = ".21/24";
const char *const B = ".22/24";
const char *const C = ".23/24";
const char *const D = ".24/24";
const char *const Swap = "1,.22 2,.21";
const char *const Unwritable = "loss-to-camera=100,commands=setipconfig+writereg";

TEST_F(AppliedPlans, Exchange) {
    check("a swap", {A, B}, Swap, "done .22; done .21", {"could go first alone"});
    check("a rotation", {A, B, C, D}, "1,.22 2,.23 3,.21,,new 4,.34", "done .22; done .23; done .21; done .34");
    check("the modes stay", {".21/24,enabled=persistent+dhcp+lla"}, "1,.31", "done .31 stored .31 word 7");
    check("all to another subnet", {A, B, C}, "1,10.9.0.22 2,10.9.0.21 3,10.9.0.23",
          "done 10.9.0.22; done 10.9.0.21; done 10.9.0.23");
    check("only unicast, from a foreign subnet",
          {"172.16.0.9/16,vendor-config=error", "172.16.0.10/16,vendor-config=error", C}, "1,.31,,far 2,.32 3,,dhcp",
          "done .31; done .32; done 169.254.1.3 stored .23 word 6", {"temporary 025AE3000002"});
}

TEST_F(AppliedPlans, NothingIsLost) {
    check("a half that ignores restarts", {A, ".22/24,ignored-restarts=all"}, Swap, "rolled-back .21; rolled-back .22");
    check("a half that dies", {A, B}, Swap, "done .22; unconfirmed .21",
          {"", {}, spoil(2, "silent-after=0"), revive(2)});
    check("a half whose old address is not given up", {A, ".22/24,ignored-restarts=9"}, Swap, "done .22; failed .3",
          {"it has got the free address .3", {}, spoil(1, Unwritable)});
}

TEST_F(AppliedPlans, WhatFailsGetsItsOldSettings) {
    check("the first dies", {A, B}, "1,.31 2,.32", "unconfirmed .31; not-begun .22",
          {"", {}, spoil(1, "silent-after=0"), revive(1)});
    check("DHCP with a stored address", {".99/24,enabled=dhcp+lla,dhcp=192.168.10.140/24,ignored-restarts=all"},
          "1,.31,static", "rolled-back .140 stored .99 word 6");
    check("one of a rotation cannot be written", {A, B, C}, "1,.22 2,.23 3,.21",
          "rolled-back .21; rolled-back .22; rolled-back .23", {"", spoil(2, Unwritable)});
    check("one that was lent an address falls silent", {"172.16.0.9/16,vendor-config=error"}, "1,.31",
          "unconfirmed .2 stored 172.16.0.9 word 5",
          {"It may still have the temporary address .2.", spoil(1, "loss-to-camera=100,commands=readreg+writereg")});
}

/// What is sent to one camera reaches the other as well.
TEST_F(AppliedPlans, ATwinComesMeanwhile) {
    std::optional<Site> other;
    const Act twin = [&](Site &) {
        other.emplace("nic1", "192.168.11.1/24", std::vector{cameraAt(1, "192.168.11.21/24")});
    };
    check("a twin", {A}, "1,.31", "failed .31", {"another camera has the same MAC address", {}, twin});
}

TEST_F(AppliedPlans, Refusals) {
    std::optional<CameraLock> lock;
    const Act take = [&](Site &) { lock.emplace("025AE3000001"); };
    const Act hold = [](Site &site) { site.cameras.setHolder(camera(2).mac, camsim::Holder{{{1}, 5555}, 2, true}); };
    const Act store = [](Site &site) {
        site.cameras.writeRegister(camera(1).mac, GEV_REG_PERSISTENT_IP_ADDRESS, 0xC0A80A4D);
    };
    const Act spoilTwo = [](Site &site) {
        spoil(2, Unwritable)(site);
        spoil(3, Unwritable)(site);
    };
    check("held since", {A, B, C}, "1,.22 2,.32 3,.33", "not-begun .21; not-begun .22; done .33", {"", hold});
    check("changed since", {A, B}, "1,.31 2,.32", "not-begun .21 stored .77 word 5; done .32", {"", store});
    check("two failures are enough", {A, B, C, D}, "1,.31 2,.32 3,.33 4,.34",
          "done .31; rolled-back .22; rolled-back .23; rolled-back .24", {"", spoilTwo, {}, {}, 2});
    check("a stop", {A, B, C, D}, "1,.31 2,.32 3,.33 4,.23", "done .31; done .32; not-begun .23; not-begun .24",
          {"", {}, {}, {}, 3, 2});
    check("somebody changes one", {A, B, C}, "1,.31 2,.32 3,.33", "not-begun .21; done .32; done .33", {"", take});
    check("and one waits for it", {A, B, C}, "1,.31 2,.21 3,.22", "not-begun .21; not-begun .22; not-begun .23",
          {"", take});
}

} // namespace
