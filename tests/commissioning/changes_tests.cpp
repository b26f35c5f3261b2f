#include "Operations.h"
#include "commissioning/ForceAddress.h"
#include "commissioning/Refusals.h"
#include "commissioning/SmallChanges.h"

using namespace commissioning;
using namespace testnet;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

const char *const ForceFailed = "forceIp: Runtime: Failed to issue the ForceIp command.";

class Forced : public Operations {
protected:
    bool force(unsigned number = 1) {
        ForceRequest request;
        request.device = device(number);
        request.adapter = "nic0";
        request.text = "why";
        return forceAddress(context(), request, &forced);
    }
    /// The reason that each question gave, where the last of the answers fails.
    std::vector<std::string> reasonsOf(unsigned number, std::deque<const char *> given) {
        reasons.clear();
        answers = std::move(given);
        EXPECT_FALSE(force(number));
        return reasons;
    }
    Address forced = 0;
};

/// The acknowledge comes from an address that the host does not hear.
TEST_F(Forced, OutsideTheSubnetIsNoFailure) {
    start({cameraAt(1, "192.168.10.21/24")});
    answers = {"10.1.2.3"};
    EXPECT_TRUE(force());
    EXPECT_EQ("10.1.2.3 10.1.2.3", site->addressOf(1) + " " + toText(forced));
    EXPECT_EQ("4", propertyOf(device(1), PropertyVerdict)); // where it can not be reached
    EXPECT_THAT(reports, ElementsAre());
}

TEST_F(Forced, AFailureGivesItsReasonToTheNextQuestion) {
    start({cameraAt(1, "192.168.10.21/24"), cameraAt(2, "192.168.10.22/24")});
    const camsim::Holder other{{camsim::Ipv4::parse("192.168.10.200"), 5555}};
    site->cameras.setHolder(camera(1).mac, other);
    const std::string held = "The camera is controlled by another application: it may refuse a new address, or that "
                             "application loses the camera.";
    EXPECT_THAT(reasonsOf(1, {"127.0.0.1", "192.168.10.77"}), ElementsAre("", "(rejected)", "", held));
    EXPECT_EQ("192.168.10.21", site->addressOf(1));
    devices = search(layer());
    EXPECT_THAT(reasonsOf(1, {}), ElementsAre(held)); // said before anything is sent

    site->cameras.setFaults(camera(2).mac, camsim::parseFaults("loss-to-camera=100,commands=forceip"));
    EXPECT_THAT(reasonsOf(2, {"192.168.10.78"}),
                ElementsAre("", "The camera did not acknowledge and still has the address 192.168.10.22."));
    site->cameras.removeCamera(camera(2).mac);
    EXPECT_THAT(reasonsOf(2, {"192.168.10.78"}), ElementsAre("", "No camera with this MAC address answered."));
    EXPECT_THAT(reports, ElementsAre(StartsWith(ForceFailed), StartsWith(ForceFailed), StartsWith(ForceFailed)));

    site->cameras.addCamera(cameraAt(3, "192.168.10.23/24", ",applies=no"));
    devices = search(layer());
    EXPECT_THAT(reasonsOf(3, {"192.168.10.79"}),
                ElementsAre("", "The camera acknowledged but still has the address 192.168.10.23."));
    EXPECT_EQ("192.168.10.23", device(3).GetIpAddress());
}

using SmallChanges = Operations;

TEST_F(SmallChanges, AreVerifiedOrRefused) {
    start({cameraAt(1, "192.168.10.21/24", ",forced=192.168.10.77/24"), cameraAt(2, "192.168.10.22/24", ",xml=none"),
           cameraAt(3, "192.168.10.23/24", ",held-by=192.168.10.200:5555"), cameraAt(5, "10.1.2.25/24")});
    EXPECT_TRUE(restart(context(), device(1)).success);
    EXPECT_EQ("192.168.10.21 192.168.10.21", site->addressOf(1) + " " + device(1).GetIpAddress().c_str());
    for (const unsigned number : {1u, 2u}) { // by feature and by register
        EXPECT_TRUE(rename(context(), device(number), "sixteen bytes ok").success);
        EXPECT_EQ("sixteen bytes ok", status(number).userName);
        EXPECT_EQ("sixteen bytes ok", device(number).GetUserDefinedName());
        EXPECT_FALSE(status(number).holder);
    }
    EXPECT_TRUE(rename(context(), device(1), "").success);
    EXPECT_EQ("", status(1).userName);
    site->cameras.addCamera(cameraAt(4, "192.168.10.24/24", ",forced=192.168.10.79/24,ignored-restarts=all"));
    devices = search(layer());
    const Result stays = restart(context(), device(4));
    EXPECT_THAT(stays.text, HasSubstr("still has the temporary address 192.168.10.79"));
    EXPECT_FALSE(stays.success || stays.verification != Verification::None);
    const TemporaryAddress there{macOf(1), address("192.168.10.78"), address("255.255.255.0"), 0};
    const Result moved = forceAddressTo(context(), device(1), there);
    EXPECT_TRUE(moved.success && moved.verification == Verification::AddressSeen) << moved.text;
    EXPECT_TRUE(rename(context(), device(1), "seventeen bytes!!").refused);
    answers = {"192.168.10.77"}; // of a camera in a foreign subnet, which keeps its own address all the same
    EXPECT_TRUE(rename(context(), device(5), "far").success);
    EXPECT_EQ("10.1.2.25 far", site->addressOf(5) + " " + status(5).userName);
    site->cameras.clearRequests();
    EXPECT_TRUE(rename(context(), device(3), "held").refused);
    EXPECT_TRUE(restart(context(), device(3)).refused);
    EXPECT_TRUE(forceAddressTo(context(), device(3), there).refused);
    EXPECT_EQ(0u, site->cameras.requests().size());

    spoil("silent-after=0");
    EXPECT_EQ("The restart was sent, but the camera did not come back.", restart(context(), device(1)).text);
    EXPECT_FALSE(forceAddressTo(context(), device(1), there).success);
    EXPECT_THAT(reports, ElementsAre(StartsWith(ForceFailed)));
}

TEST_F(SmallChanges, RefusedWithAReason) {
    start({cameraAt(1, "192.168.10.21/24", ",options=persistent+lla"),
           cameraAt(2, "192.168.10.22/24", ",forced=192.168.10.99/24"),
           cameraAt(3, "192.168.10.23/24", ",held-by=192.168.10.200:5555")});
    AddressSurroundings around;
    around.adapter = {{address("192.168.10.1"), address("255.255.255.0")}};
    around.own = {around.adapter[0], {address("10.0.0.1"), address("255.0.0.0")}};
    around.devices = &devices;
    around.hidden.resize(1);
    around.hidden[0].mac = "025AE3000009";
    around.hidden[0].address = address("192.168.10.77");
    const struct {
        unsigned camera;
        std::optional<Mode> mode;
        const char *address, *mask, *reason, *gateway = "0.0.0.0";
    } rows[] = {
        {1, Mode::Static, "192.168.10.30", "255.255.255.0", ""},
        {1, Mode::Static, "192.168.10.21", "255.255.255.0", ""}, // its own
        {1, Mode::Auto, "0.0.0.0", "0.0.0.0", ""},
        {1, Mode::Static, "0.0.0.0", "255.255.255.0", "No camera can have"},
        {1, Mode::Static, "127.3.2.1", "255.255.255.0", "loopback"},
        {1, Mode::Static, "224.0.0.1", "255.255.255.0", "multicast"},
        {1, Mode::Static, "192.168.10.1", "255.255.255.0", "of this computer"},
        {1, Mode::Static, "10.0.0.1", "255.0.0.0", "of this computer"},
        {1, Mode::Static, "192.168.10.0", "255.255.255.0", "network itself"},
        {1, Mode::Static, "192.168.10.255", "255.255.0.0", "broadcast"}, // of the adapter's subnet
        {1, Mode::Static, "192.168.10.127", "255.255.255.128", "broadcast"},
        {1, Mode::Static, "192.168.10.99", "255.255.255.0", "02:5A:E3:00:00:02 has"},
        {1, Mode::Static, "192.168.10.22", "255.255.255.0", "02:5A:E3:00:00:02 has"}, // at its next start
        {1, Mode::Static, "192.168.10.77", "255.255.255.0", "02:5A:E3:00:00:09 has"}, // which is hidden
        {1, Mode::Static, "192.168.11.30", "255.255.255.0", "outside the subnet"},
        {1, Mode::Static, "192.168.10.30", "0.0.0.0", "mask"},
        {1, Mode::Static, "192.168.10.30", "255.255.255.0", "", "192.168.10.1"},
        {1, Mode::Static, "192.168.10.30", "255.255.255.0", "the camera itself", "192.168.10.30"},
        {1, Mode::Static, "192.168.10.30", "255.255.255.0", "gateway 192.168.11.1 is outside", "192.168.11.1"},
        {1, Mode::Static, "192.168.10.30", "255.255.255.0", "broadcast", "192.168.10.255"},
        {1, Mode::Dhcp, "0.0.0.0", "0.0.0.0", "does not support DHCP"},
        {1, std::nullopt, "0.0.0.0", "0.0.0.0", "No mode"},
        {3, Mode::Dhcp, "0.0.0.0", "0.0.0.0", "controlled by another"},
    };
    for (const auto &row : rows) {
        Change change;
        change.device = device(row.camera);
        change.mode = row.mode;
        change.address = address(row.address);
        change.mask = address(row.mask);
        change.gateway = address(row.gateway);
        const std::string reason = refusalOf(change, around);
        EXPECT_THAT(reason, HasSubstr(row.reason)) << row.address;
        EXPECT_EQ(row.reason[0] == '\0', reason.empty()) << reason;
    }
    around.allowsForeignSubnet = true;
    EXPECT_EQ("", refusalOfAddress(address("192.168.11.30"), address("255.255.255.0"), macOf(1), around));
}

} // namespace
