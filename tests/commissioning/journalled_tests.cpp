#include "Operations.h"
#include "commissioning/CameraLock.h"
#include "commissioning/ForceAddress.h"
#include "commissioning/Journal.h"
#include "commissioning/Rescue.h"
#include "commissioning/Saving.h"
#include "commissioning/SmallChanges.h"
#include "commissioning/Words.h"
#include "gxapi/GvcpMessages.h"

#include <csignal>
#include <sys/resource.h>

using namespace commissioning;
using namespace testnet;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class Journalled : public Operations {
protected:
    Context journalled() {
        Context all = context();
        all.journal = &journal;
        return all;
    }

    Result force(unsigned number, const char *to) {
        ForceRequest request;
        request.device = device(number);
        answers = {to};
        Result result;
        result.success = forceAddress(journalled(), request, nullptr);
        result.text = reasons.empty() ? "" : reasons.back();
        return result;
    }

    /// Of each entry its camera, what it was, what became of it, by which way, and the address before and after.
    std::vector<std::string> entries() const {
        std::vector<std::string> all;
        for (const JournalEntry &entry : journal.read().entries)
            all.push_back(entry.mac.back() + (" " + entry.what) + " " + toText(entry.fate) + " " + toText(entry.path) +
                          " " + toText(entry.before.stored ? entry.before.stored->address : 0) + " " +
                          toText(entry.wanted.address) + " " + toText(entry.after ? entry.after->current.address : 0));
        return all;
    }

    bool wasChangeSent() const {
        for (const camsim::ReceivedRequest &request : site->cameras.requests()) {
            for (const int command : {TAG_FORCEIP_CMD, TAG_WRITEREG_CMD, TAG_WRITEMEM_CMD, TAG_SETIPCONFIG_CMD}) {
                if (request.command() == command)
                    return true;
            }
        }
        return false;
    }

    struct Operation {
        unsigned camera;
        std::function<Result()> run;
    };
    const TemporaryAddress there{macOf(3), address("192.168.10.73"), address("255.255.255.0"), 0};
    AddressSurroundings around;
    const std::vector<Operation> operations = {
        {1, [this] { return configure(journalled(), change(1, Mode::Static, "192.168.10.51")); }},
        {2,
         [this] {
             return rescue(journalled(), {device(2), "nic0", address("192.168.10.52"), address("255.255.255.0")},
                           around);
         }},
        {3, [this] { return forceAddressTo(journalled(), device(3), there); }},
        {3, [this] { return restart(journalled(), device(3)); }},
        {4, [this] { return rename(journalled(), device(4), "new"); }},
        {4, [this] { return force(4, "192.168.10.74"); }},
    };
    const Cameras cameras = {cameraAt(1, "192.168.10.21/24", ",name=left"), cameraAt(2, "10.1.2.22/24"),
                             cameraAt(3, "192.168.10.23/24"), cameraAt(4, "192.168.10.24/24")};
    Journal journal{folder / "state/changes.jsonl"};
};

TEST_F(Journalled, EachOperationHasOneEntryAndItsFate) {
    start(cameras);
    for (const Operation &operation : operations) {
        onStep = [&](Step step) {
            EXPECT_TRUE(step == Step::Look || journal.read().entries.back().fate == Fate::Open);
        };
        const Result result = operation.run();
        EXPECT_TRUE(result.success) << result.text;
    }
    EXPECT_THAT(entries(), ElementsAre("1 set done broadcast 192.168.10.21 192.168.10.51 192.168.10.51",
                                       "2 rescue done broadcast 0.0.0.0 192.168.10.52 192.168.10.52",
                                       "3 force done force 192.168.10.23 192.168.10.73 192.168.10.73",
                                       "3 restart done force 192.168.10.23 192.168.10.23 192.168.10.23",
                                       "4 name done unicast 192.168.10.24 192.168.10.24 192.168.10.24",
                                       "4 force done force 192.168.10.24 192.168.10.74 192.168.10.74"));
    EXPECT_EQ("left new", journal.read().entries[0].before.name + " " + journal.read().entries[4].wanted.name);
}

/// Somebody has changed it since it was found: what is journalled is what it really had.
TEST_F(Journalled, TheStateBeforeIsReadAgain) {
    start(cameras);
    ASSERT_TRUE(configure(context(), change(1, Mode::Static, "192.168.10.51")).success);
    const Change stale = change(1, Mode::Static, "192.168.10.61");
    ASSERT_TRUE(configure(context(), change(1, Mode::Static, "192.168.10.55")).success);
    EXPECT_TRUE(configure(journalled(), stale).success);
    EXPECT_THAT(entries(), ElementsAre("1 set done broadcast 192.168.10.55 192.168.10.61 192.168.10.61"));
}

TEST_F(Journalled, FailuresAndTemporaryAddresses) {
    start({cameraAt(1, "172.16.0.9/16", ",vendor-config=error,xml=none"),
           cameraAt(2, "192.168.10.22/24", ",applies=no"), cameraAt(3, "192.168.10.23/24")});
    answers = {"192.168.10.77"};
    EXPECT_TRUE(configure(journalled(), change(1, Mode::Static, "192.168.10.51")).success);
    EXPECT_FALSE(force(2, "192.168.10.78").success);
    onStep = [&](Step) { site->cameras.setFaults(camera(3).mac, camsim::parseFaults("silent-after=0")); };
    EXPECT_FALSE(configure(journalled(), change(3, Mode::Static, "192.168.10.53")).success);
    EXPECT_THAT(entries(), ElementsAre("1 set done unicast 0.0.0.0 192.168.10.51 192.168.10.51",
                                       "1 temporary done force 0.0.0.0 192.168.10.77 192.168.10.77",
                                       "2 force failed force 192.168.10.22 192.168.10.78 192.168.10.22",
                                       "3 set unconfirmed broadcast 192.168.10.23 192.168.10.53 0.0.0.0"));
}

TEST_F(Journalled, WithoutLockOrJournalOrWhenCancelledNothingIsSent) {
    start(cameras);
    Gx::CStopToken requested;
    requested.RequestStop();
    site->cameras.clearRequests();
    std::signal(SIGXFSZ, SIG_IGN);
    journal = Journal(folder / "changes.jsonl");
    std::ofstream(folder / "changes.jsonl") << "0123456789\n";
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    for (const Operation &operation : operations) {
        {
            const CameraLock lock(macOf(operation.camera));
            EXPECT_THAT(operation.run().text, HasSubstr("is being changed by commissioning_t (process "));
        }
        stop = &requested;
        EXPECT_THAT(operation.run().text, HasSubstr("cancelled"));
        stop = nullptr;
        const rlimit full{20, before.rlim_max}; // a disk that has room for a part of a line
        setrlimit(RLIMIT_FSIZE, &full);
        const Result refused = operation.run();
        setrlimit(RLIMIT_FSIZE, &before);
        EXPECT_FALSE(refused.success);
        EXPECT_THAT(refused.text, HasSubstr("cannot be written ("));
    }
    EXPECT_FALSE(wasChangeSent());
    EXPECT_THAT(entries(), ElementsAre());
    EXPECT_THAT(journal.read().unreadable, ElementsAre(1U, 2U)); // the next line is a line
    EXPECT_TRUE(operations[0].run().success);
    EXPECT_EQ(1U, entries().size());
}

} // namespace
