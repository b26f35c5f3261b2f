#include "Observing.h"
#include "commissioning/CameraLock.h"
#include "commissioning/PlanApplication.h"

#include <atomic>
#include <thread>

using namespace commissioning;
using namespace testnet;
using testing::HasSubstr;

namespace {

/// A plan from its text to the cameras' registers. Camera n has the address 192.168.10.2n unless its row says more.
class AppliedPlans : public Observing {
protected:
    using Act = std::function<void(Site &)>;
    struct Row {
        const char *name;
        std::vector<std::string> cameras; ///< "192.168.10.21/24,key=value"
        std::string plan;                 ///< lines without heading
        std::string expected;             ///< what shown() gives
        Act checked = {};                 ///< between the check and the plan
        Act written = {};                 ///< after all writing, before the restarts
        Act ended = {};                   ///< before the cameras are asked
        unsigned maxFailures = 3;
        std::size_t stopAfter = 1000; ///< cameras written one by one
        std::string text = {};        ///< in that of some camera, or in the remark
    };

    static std::string stateText(PlanState state) {
        return std::array{"unchanged", "done", "failed", "rolled-back", "unconfirmed", "not-begun"}.at(
            static_cast<std::size_t>(state));
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
    PlanOutcome applied(const Row &row, Site &site) {
        const Inventory inventory = inventoryOf(observe());
        const PlanReview reviewed = review(readPlan("camera,mode,address,name\n" + row.plan), inventory);
        for (const PlanProblem &problem : reviewed.problems)
            ADD_FAILURE() << problem.text;
        if (row.checked)
            row.checked(site);
        PlanOptions options;
        options.patience = {4, std::chrono::milliseconds(300), 3};
        options.maxFailures = row.maxFailures;
        std::atomic<std::size_t> written{0};
        options.progress = [&](PlanPhase phase, std::size_t done, std::size_t all) {
            written += phase == PlanPhase::Writing ? 1 : 0;
            if (phase == PlanPhase::Writing && done == all && row.written)
                row.written(site);
        };
        options.isStopRequested = [&] { return written >= row.stopAfter; };
        options.atOnce = row.stopAfter < 1000 ? 1 : 32;
        Journal journal(folder / row.name);
        PlanOutcome outcome = apply(layer(), reviewed, inventory, &journal, options);
        std::string texts = outcome.remark + journalText(journal, outcome);
        for (const PlanRecord &record : outcome.records) {
            texts += "\n" + record.result.text;
            EXPECT_EQ(record.state == PlanState::Done, record.result.success) << record.result.text;
        }
        EXPECT_THAT(texts, HasSubstr(row.text));
        return outcome;
    }
    void check(const std::vector<Row> &rows) {
        for (const Row &row : rows) {
            SCOPED_TRACE(row.name);
            std::vector<camsim::CameraConfig> cameras;
            for (std::size_t i = 0; i < row.cameras.size(); ++i) {
                const std::size_t comma = std::min(row.cameras[i].find(','), row.cameras[i].size());
                cameras.push_back(cameraAt(static_cast<unsigned>(i + 1), row.cameras[i].substr(0, comma),
                                           row.cameras[i].substr(comma) + ",xml=none"));
            }
            Site site("nic0", "192.168.10.1/24", cameras);
            ip("address add 10.9.0.1/24 brd + dev nic0");
            const PlanOutcome outcome = applied(row, site);
            if (row.ended)
                row.ended(site);
            EXPECT_EQ(row.expected, shown(site, outcome));
        }
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

const char *const A = "192.168.10.21/24";
const char *const B = "192.168.10.22/24";
const char *const C = "192.168.10.23/24";
const char *const Swap = "1,,192.168.10.22,\n2,,192.168.10.21,\n";

TEST_F(AppliedPlans, Exchange) {
    check({
        {"a swap", {A, B}, Swap, "done 192.168.10.22; done 192.168.10.21", {}, {}, {}, 3, 1000, "could go first alone"},
        {"a rotation, and one beside it",
         {A, B, C, "192.168.10.24/24"},
         "1,,192.168.10.22,\n2,,192.168.10.23,\n3,,192.168.10.21,new\n4,,192.168.10.34,\n",
         "done 192.168.10.22; done 192.168.10.23; done 192.168.10.21; done 192.168.10.34"},
        {"an address alone leaves the modes alone",
         {"192.168.10.21/24,enabled=persistent+dhcp+lla"},
         "1,,192.168.10.31,\n",
         "done 192.168.10.31 stored 192.168.10.31 word 7"},
        {"all to another subnet",
         {A, B, C},
         "1,,10.9.0.22,\n2,,10.9.0.21,\n3,,10.9.0.23,\n",
         "done 10.9.0.22; done 10.9.0.21; done 10.9.0.23"},
        {"only unicast, from a foreign subnet",
         {"172.16.0.9/16,vendor-config=error", "172.16.0.10/16,vendor-config=error", C},
         "1,,192.168.10.31,far\n2,,192.168.10.32,\n3,dhcp,,\n",
         "done 192.168.10.31; done 192.168.10.32; done 169.254.1.3 stored 192.168.10.23 word 6",
         {},
         {},
         {},
         3,
         1000,
         "temporary 025AE3000002"},
    });
}

TEST_F(AppliedPlans, NothingIsLost) {
    check({
        {"a half that ignores restarts",
         {A, std::string(B) + ",ignored-restarts=all"},
         Swap,
         "rolled-back 192.168.10.21; rolled-back 192.168.10.22"},
        {"a half that dies",
         {A, B},
         Swap,
         "done 192.168.10.22; unconfirmed 192.168.10.21",
         {},
         spoil(2, "silent-after=0"),
         revive(2)},
        {"a half whose old address is not given up",
         {A, std::string(B) + ",ignored-restarts=9"},
         Swap,
         "done 192.168.10.22; failed 192.168.10.3",
         {},
         spoil(1, "loss-to-camera=100,commands=setipconfig+writereg"),
         {},
         3,
         1000,
         "it has got the free address 192.168.10.3"},
    });
}

TEST_F(AppliedPlans, WhatFailsGetsItsOldSettings) {
    check({
        {"the first one dies",
         {A, B},
         "1,,192.168.10.31,\n2,,192.168.10.32,\n",
         "unconfirmed 192.168.10.31; not-begun 192.168.10.22",
         {},
         spoil(1, "silent-after=0"),
         revive(1)},
        {"DHCP with a stored address",
         {"192.168.10.99/24,enabled=dhcp+lla,dhcp=192.168.10.140/24,ignored-restarts=all"},
         "1,static,192.168.10.31,\n",
         "rolled-back 192.168.10.140 stored 192.168.10.99 word 6"},
        {"one of a rotation cannot be written",
         {A, B, C},
         "1,,192.168.10.22,\n2,,192.168.10.23,\n3,,192.168.10.21,\n",
         "rolled-back 192.168.10.21; rolled-back 192.168.10.22; rolled-back 192.168.10.23",
         spoil(2, "loss-to-camera=100,commands=setipconfig+writereg")},
        {"one that was lent an address falls silent",
         {"172.16.0.9/16,vendor-config=error"},
         "1,,192.168.10.31,\n",
         "unconfirmed 192.168.10.2 stored 172.16.0.9 word 5",
         spoil(1, "loss-to-camera=100,commands=readreg+writereg"),
         {},
         {},
         3,
         1000,
         "It may still have the temporary address 192.168.10.2."},
    });
}

/// What is sent to one camera reaches the other as well.
TEST_F(AppliedPlans, ATwinComesMeanwhile) {
    std::optional<Site> other;
    check({{"a twin",
            {A},
            "1,,192.168.10.31,\n",
            "failed 192.168.10.31",
            {},
            [&](Site &) { other.emplace("nic1", "192.168.11.1/24", std::vector{cameraAt(1, "192.168.11.21/24")}); },
            {},
            3,
            1000,
            "another camera has the same MAC address"}});
}

TEST_F(AppliedPlans, Refusals) {
    std::optional<CameraLock> lock;
    check({
        {"held since",
         {A, B, C},
         "1,,192.168.10.22,\n2,,192.168.10.32,\n3,,192.168.10.33,\n",
         "not-begun 192.168.10.21; not-begun 192.168.10.22; done 192.168.10.33",
         [](Site &site) {
             site.cameras.setHolder(camera(2).mac, camsim::Holder{{{1}, 5555}, 2, true});
         }},
        {"changed since",
         {A, B},
         "1,,192.168.10.31,\n2,,192.168.10.32,\n",
         "not-begun 192.168.10.21 stored 192.168.10.77 word 5; done 192.168.10.32",
         [](Site &site) { site.cameras.writeRegister(camera(1).mac, GEV_REG_PERSISTENT_IP_ADDRESS, 0xC0A80A4D); }},
        {"the first one is being changed by somebody else",
         {A, B, C},
         "1,,192.168.10.31,\n2,,192.168.10.32,\n3,,192.168.10.33,\n",
         "not-begun 192.168.10.21; done 192.168.10.32; done 192.168.10.33",
         [&](Site &) { lock.emplace("025AE3000001"); },
         {},
         [&](Site &) { lock.reset(); }},
        {"and somebody waits for its address",
         {A, B, C},
         "1,,192.168.10.31,\n2,,192.168.10.21,\n3,,192.168.10.22,\n",
         "not-begun 192.168.10.21; not-begun 192.168.10.22; not-begun 192.168.10.23",
         [&](Site &) { lock.emplace("025AE3000001"); },
         {},
         [&](Site &) { lock.reset(); }},
        {"two failures are enough",
         {A, B, C, "192.168.10.24/24"},
         "1,,192.168.10.31,\n2,,192.168.10.32,\n3,,192.168.10.33,\n4,,192.168.10.34,\n",
         "done 192.168.10.31; rolled-back 192.168.10.22; rolled-back 192.168.10.23; rolled-back 192.168.10.24",
         [](Site &site) {
             spoil(2, "loss-to-camera=100,commands=setipconfig+writereg")(site);
             spoil(3, "loss-to-camera=100,commands=setipconfig+writereg")(site);
         },
         {},
         {},
         2},
        {"a stop",
         {A, B, C, "192.168.10.24/24"},
         "1,,192.168.10.31,\n2,,192.168.10.32,\n3,,192.168.10.33,\n4,,192.168.10.23,\n",
         "done 192.168.10.31; done 192.168.10.32; not-begun 192.168.10.23; not-begun 192.168.10.24",
         {},
         {},
         {},
         3,
         2},
    });
}

} // namespace
