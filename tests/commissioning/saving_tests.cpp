#include "Operations.h"
#include "commissioning/Saving.h"
#include "support/Leaks.h"

using namespace commissioning;
using namespace testnet;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr char Lost[] = "broadcastConfiguration: Runtime: Failed to discover reconfigured device";

class SavedChanges : public Operations {
protected:
    std::string known(const char *property) { return propertyOf(device(1), property).c_str(); }
    std::string storedNow() {
        const camsim::IpSettings stored = status().persistent;
        return stored.address.toString() + " " + stored.mask.toString() + " " + stored.gateway.toString();
    }
};

/// Each part of the settings by each way, and what is known of the camera then.
TEST_F(SavedChanges, EachPartAlone) {
    const struct {
        Mode mode;
        const char *address, *mask, *gateway, *word, *now;
    } rows[] = {
        {Mode::Static, "192.168.10.51", "255.255.255.0", "0.0.0.0", "5", "192.168.10.51"},
        {Mode::Static, "192.168.10.51", "255.255.255.0", "192.168.10.254", "5", "192.168.10.51"},
        {Mode::Static, "192.168.10.51", "255.255.0.0", "192.168.10.254", "5", "192.168.10.51"},
        {Mode::Dhcp, "192.168.10.51", "255.255.0.0", "192.168.10.254", "6", "192.168.10.140"},
        {Mode::Static, "192.168.10.51", "255.255.0.0", "192.168.10.254", "5", "192.168.10.51"},
        {Mode::Auto, "192.168.10.51", "255.255.0.0", "192.168.10.254", "4", "169.254."},
    };
    const std::string settings = ",dhcp=192.168.10.140/24,heartbeat=4321,vendor-config=";
    for (const char *const vendor : {"supported", "error"}) {
        start({cameraAt(1, "192.168.10.21/24", settings + vendor)});
        for (const auto &row : rows) {
            SCOPED_TRACE(testing::Message() << vendor << " " << row.word << " " << row.mask << " " << row.gateway);
            const Result result = configure(context(), change(1, row.mode, row.address, row.mask, row.gateway));
            EXPECT_TRUE(result.success) << result.text;
            EXPECT_EQ("", result.text);
            EXPECT_EQ(row.mode == Mode::Auto ? Verification::AddressSeen : Verification::StoredRead,
                      result.verification);
            EXPECT_EQ(std::string(row.address) + " " + row.mask + " " + row.gateway, storedNow());
            EXPECT_EQ(row.word, std::to_string(status().ipEnabled));
            EXPECT_EQ(row.word, known("IpConfigCurrent"));
            EXPECT_EQ(site->addressOf(1), known("IpAddress"));
            EXPECT_THAT(site->addressOf(1), HasSubstr(row.now));
            EXPECT_EQ(row.address, known("GevPersistentIPAddress"));
            EXPECT_EQ(4321u, reg(GEV_REG_HEARTBEAT_TIMEOUT)); // nobody shall be locked out by a crash later
            EXPECT_FALSE(status().holder);
        }
    }
    EXPECT_THAT(reports, ElementsAre());
}

/// A camera that dies while it is written to, by unicast from DHCP to a static address, and what is said of it when it
/// is dead, and when somebody has switched it off and on. The old static address is 192.168.10.99.
TEST_F(SavedChanges, TellsWhatACameraThatDiesHasStored) {
    const std::string gone = " It does not answer the search.";
    const std::string oldAddress = "the camera will boot with its old static address 192.168.10.99.";
    const std::string modeOnly = "Only the mode was written, the addresses were not: " + oldAddress +
                                 " It now has the address 192.168.10.99 and is set to a static address.";
    const struct {
        const char *faults;
        bool returns;
        std::string text;
    } rows[] = {
        {"silent-after=0", false,
         "The settings were sent, but not acknowledged: it is not known whether the camera has stored them." + gone},
        {"silent-after=1", false,
         "The mode was written; it is not known whether the addresses were. If not, " + oldAddress + gone},
        {"silent-after=3", false, "The settings were sent, but the camera did not come back." + gone},
        {"silent-after=0", true,
         "The camera has not stored the settings. It now has the address 192.168.10.140 and is set to DHCP."},
        {"silent-after=1", true, modeOnly},
        {"loss-from-camera=100,commands=writereg", true, modeOnly},
        {"silent-after=3", true, ""}, // a restart is a restart
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(testing::Message() << row.faults << (row.returns ? " and returns" : ""));
        start(
            {cameraAt(1, "192.168.10.99/24", ",enabled=dhcp+lla,dhcp=192.168.10.140/24,vendor-config=error,xml=none")});
        const auto revive = [&] {
            if (!row.returns)
                return;
            spoil("");
            site->cameras.powerCycle(camera(1).mac);
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
        };
        bool isWritten = false;
        onFailure = revive;
        onStep = [&](Step step) {
            if (step == Step::Write && !std::exchange(isWritten, true))
                spoil(row.faults);
            if (step == Step::Rediscover)
                revive();
        };
        const Result result = configure(context(), change(1, Mode::Static));
        EXPECT_EQ(row.text, result.text);
        EXPECT_EQ(row.text.empty(), result.success);
        EXPECT_EQ(row.returns ? "1" : "4", known(PropertyVerdict));
        EXPECT_EQ(row.returns ? site->addressOf(1) : known("IpAddress"), known("IpAddress"));
        EXPECT_FALSE(connection.isOpen());
    }
}

/// Another camera takes its address while its description is read.
TEST_F(SavedChanges, WritesToNoOtherCamera) {
    start({cameraAt(1, "192.168.10.21/24", ",vendor-config=error"), cameraAt(2, "192.168.10.22/24")});
    site->cameras.setFaults(camsim::parseFaults("delay=10-10"));
    std::thread other;
    onStep = [&](Step step) {
        if (step != Step::Connect || other.joinable())
            return;
        other = std::thread([&] {
            eventually([&] { return status().requests[TAG_READMEM_CMD] > 2; });
            for (const unsigned number : {1U, 2U})
                site->cameras.removeCamera(camera(number).mac);
            site->cameras.addCamera(cameraAt(2, "192.168.10.22/24", ",forced=192.168.10.21/24"));
        });
    };
    EXPECT_FALSE(configure(context(), change(1, Mode::Static)).success);
    other.join();
    EXPECT_EQ("192.168.10.22", status(2).persistent.address.toString());
    EXPECT_FALSE(status(2).holder);
}

TEST_F(SavedChanges, OneThatDoesNotComeBackIsKnownByWhatItWasSent) {
    start({cameraAt(1, "192.168.10.21/24")});
    for (const auto &[mode, word] : {std::pair(Mode::Dhcp, "6"), std::pair(Mode::Auto, "4")}) {
        spoil("");
        onStep = [&](Step step) {
            if (step == Step::Rediscover)
                spoil("silent-after=0");
        };
        EXPECT_FALSE(configure(context(), change(1, mode)).success);
        EXPECT_EQ(std::string(word) + " 192.168.10.21", known("IpConfigCurrent") + " " + known("IpAddress"));
    }
    EXPECT_THAT(reports, Contains(Lost));
}

TEST_F(SavedChanges, ALostRestartIsRepeated) {
    const struct {
        Mode mode;
        const char *ignored, *text;
        bool success;
    } rows[] = {
        {Mode::Static, "3", "", true},
        {Mode::Dhcp, "3", "", true},
        {Mode::Dhcp, "all",
         "The settings are stored, and the camera still has the address 192.168.10.21. If it should have another one, "
         "it may need a power cycle.",
         true},
        {Mode::Static, "all",
         "The settings are stored in the camera. It now has the address 192.168.10.21 and is set to a static address. "
         "It did not restart its IP configuration: it may need a power cycle.",
         false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(testing::Message() << row.ignored << " " << row.success);
        start(
            {cameraAt(1, "192.168.10.21/24", std::string(",dhcp=192.168.10.140/24,ignored-restarts=") + row.ignored)});
        const Result result = configure(context(), change(1, row.mode));
        EXPECT_EQ(row.success, result.success);
        EXPECT_EQ(row.text, result.text);
        EXPECT_EQ(Path::Broadcast, result.path); // what is stored need not be written once more
    }
    EXPECT_THAT(reports, ElementsAre());
}

TEST_F(SavedChanges, AnAcknowledgeOfACameraThatDoesNothingIsNotBelieved) {
    start({cameraAt(1, "192.168.10.21/24", ",applies=no")});
    const Result result = configure(context(), change(1, Mode::Static));
    EXPECT_TRUE(result.success && result.path == Path::Unicast) << result.text;
    EXPECT_EQ("192.168.10.51 255.255.255.0 0.0.0.0", storedNow());
}

TEST_F(SavedChanges, AnOutageWhileWritingLocksNobodyOut) {
    for (const char *const after : {"0", "1", "2"}) { // the addresses, the heartbeat timeout, the end of control
        start({cameraAt(1, "192.168.10.21/24", ",vendor-config=error,xml=none")});
        bool isWritten = false;
        onStep = [&](Step step) {
            if (step == Step::Write && !std::exchange(isWritten, true))
                spoil(std::string("outage=700,deaf-after=") + after + ",commands=writereg");
        };
        const Result result = configure(context(), change(1, Mode::Static));
        EXPECT_EQ(result.success, site->addressOf(1) == "192.168.10.51") << after << ": " << result.text;
        EXPECT_EQ(after[0] != '0', result.success) << result.text;
        std::this_thread::sleep_for(std::chrono::milliseconds(700));
        EXPECT_FALSE(status().holder) << after;
    }
}

TEST_F(SavedChanges, ANameThatIsGoneAfterwardsIsWrittenBack) {
    start({cameraAt(1, "192.168.10.21/24", ",name=left")});
    onStep = [&](Step step) {
        if (step == Step::Rediscover)
            site->cameras.writeRegister(camera(1).mac, GEV_REG_USER_DEFINED_NAME, 0);
    };
    EXPECT_EQ("", configure(context(), change(1, Mode::Static)).text);
    EXPECT_EQ("left", status().userName);
}

TEST_F(SavedChanges, AForgedAcknowledgeIsNotBelieved) {
    const ScriptedSite forger("nic1", "192.168.20.1/24", "192.168.20.66/24", [](const Bytes &request, std::size_t) {
        const bool isVendorCommand =
            request.at(2) << 8 == (TAG_SETIPCONFIG_CMD & 0xFF00) && request.at(3) == (TAG_SETIPCONFIG_CMD & 0xFF);
        return isVendorCommand ? std::vector<Bytes>{acknowledge(request, 0, TAG_SETIPCONFIG_CMD + 1, {})}
                               : std::vector<Bytes>{};
    });
    start({cameraAt(1, "192.168.10.21/24", ",vendor-config=silent,xml=none")});
    for (const char *const gateway : {"0.0.0.0", "192.168.10.254"}) { // the latter cannot be told by the address
        const Result result = configure(context(), change(1, Mode::Static, "192.168.10.51", "255.255.255.0", gateway));
        EXPECT_TRUE(result.success) << result.text;
        EXPECT_EQ(Path::Unicast, result.path);
        EXPECT_EQ(std::string("192.168.10.51 255.255.255.0 ") + gateway, storedNow());
    }
    EXPECT_THAT(reports, ElementsAre());
}

TEST_F(SavedChanges, ACameraThatCannotBeReachedGetsATemporaryAddress) {
    start({cameraAt(1, "172.16.0.9/16", ",vendor-config=error,xml=none")});
    const Result canceled = configure(context(), change(1, Mode::Static));
    EXPECT_EQ("The settings were sent, but not acknowledged: it is not known whether the camera has stored them. It "
              "now has the address 172.16.0.9 and is set to a static address.",
              canceled.text);
    answers = {"192.168.10.77"};
    const Result saved = configure(context(), change(1, Mode::Static));
    EXPECT_TRUE(saved.success) << saved.text;
    EXPECT_EQ("192.168.10.51", site->addressOf(1));
    EXPECT_THAT(reasons, ElementsAre("", ""));
    EXPECT_THAT(reports, ElementsAre());
}

} // namespace
