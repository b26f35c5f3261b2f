#include "Observing.h"

#include "commissioning/FreeAddresses.h"
#include "commissioning/Neighbourhood.h"
#include "support/Leaks.h"
#include "support/SocketAddress.h"

#include <atomic>
#include <filesystem>

using namespace commissioning;
using namespace testnet;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::Pair;
using testing::StartsWith;
using testing::UnorderedElementsAre;

namespace {

void nft(const std::string &ruleset) { ASSERT_EQ(std::system(("nft '" + ruleset + "'").c_str()), 0) << ruleset; }

/// Sends datagrams that nobody wants, from behind an adapter, as long as it lives.
class Noise {
public:
    Noise(const Namespace &where, const char *target, std::uint16_t port)
        : m_Thread([this, &where, target, port] {
              where.run([&] {
                  const int socket = ::socket(AF_INET, SOCK_DGRAM, 0);
                  for (; !m_IsOver; std::this_thread::sleep_for(std::chrono::milliseconds(2)))
                      sendto(socket, "", 1, 0, SocketAddress(target, port), sizeof(sockaddr_in));
                  close(socket);
              });
          }) {}
    ~Noise() {
        m_IsOver = true;
        m_Thread.join();
    }

private:
    std::atomic<bool> m_IsOver{false};
    std::thread m_Thread;
};

/// A copy of lanvane-listen that has its capability.
std::string grantedListener(const TestFolder &folder, const char *capability = "cap_net_raw=p") {
    const std::string path = folder / "lanvane-listen";
    std::filesystem::copy_file(LISTENER, path, std::filesystem::copy_options::overwrite_existing);
    EXPECT_EQ(std::system(("setcap " + std::string(capability) + " " + path).c_str()), 0);
    return path;
}

TEST_F(Observing, HealthyNetworksHaveNoFindings) {
    const Site site("nic0", "192.168.1.5/24", {cameraAt(1, "192.168.1.20/24"), cameraAt(2, "192.168.1.21/24")});
    EXPECT_THAT(summary(observe(true)), ElementsAre());

    // Traffic that vanishes all the time: dropped by a firewall, of a multicast group, forwarded to nowhere.
    nft("add table inet filter; add chain inet filter input { type filter hook input priority 0; policy drop; }; "
        "add rule inet filter input udp dport 5000 drop; add rule inet filter input udp sport 3956 accept; "
        "add rule inet filter input ct state established,related accept; "
        "add rule inet filter input icmp type echo-request drop");
    ip("route add default via 192.168.1.1");
    EXPECT_EQ(run("sysctl -qw net.ipv4.conf.nic0.rp_filter=2 net.ipv4.conf.all.rp_filter=2 net.ipv4.ip_forward=1"), 0);
    ip("link add docker0 type bridge");
    ip("address add 172.17.0.1/16 brd + dev docker0");
    ip("link set docker0 up");
    const testnet::Adapter unused("nic1", "10.1.1.1/24");
    unused.cameraSide().ip("link set cam down");
    site.adapter.cameraSide().ip("route add default via 192.168.1.5");
    const Noise dropped(site.adapter.cameraSide(), "192.168.1.5", 5000);
    const Noise multicast(site.adapter.cameraSide(), "239.1.1.1", 5001);
    const Noise forwarded(site.adapter.cameraSide(), "203.0.113.1", 5002);
    EXPECT_TRUE(eventually([] { return readCounters().unexplained() > 20; }));
    for (int i = 0; i < 3; ++i)
        EXPECT_THAT(summary(observe(true)), ElementsAre("info no-carrier nic1"));
}

TEST_F(Observing, LinksAreSwitchedOnAndGivenAddresses) {
    const Site site("nic0", "192.168.1.5/24", {cameraAt(1, "192.168.1.20/24")});
    const testnet::Adapter down("nic1", "10.1.1.1/24");
    const testnet::Adapter unplugged("nic2", "10.1.2.1/24");
    const testnet::Adapter without("nic3", "");
    ip("link set nic1 down");
    unplugged.cameraSide().ip("link set cam down");
    const Diagnosis before = observe();
    EXPECT_THAT(summary(before),
                UnorderedElementsAre("info link-down nic1", "info no-carrier nic2", "info no-ipv4 nic3"));
    for (const char *code : {"link-down", "no-ipv4"})
        EXPECT_EQ(run(find(before, code).remedies.at(0)), 0);
    unplugged.cameraSide().ip("link set cam up");
    EXPECT_THAT(summary(observe()),
                UnorderedElementsAre("info no-answer nic1", "info no-answer nic2", "info no-answer nic3"));
}

TEST_F(Observing, OneSubnetTwice) {
    const Site first("nic0", "192.168.1.5/24", {cameraAt(1, "192.168.1.20/24")});
    const Site second("nic1", "192.168.1.6/24", {cameraAt(2, "192.168.1.30/24")});
    const Diagnosis before = observe();
    EXPECT_THAT(summary(before), Contains("warning same-subnet-twice nic1"));
    EXPECT_THAT(summary(before), Contains("warning routed-elsewhere nic1 025AE3000002"));
    EXPECT_EQ(run(find(before, "routed-elsewhere").remedies.at(0)), 0);
    EXPECT_THAT(summary(observe()), Not(Contains(HasSubstr("routed-elsewhere"))));
    EXPECT_EQ(run(find(before, "same-subnet-twice").remedies.at(0)), 0);
    EXPECT_THAT(summary(observe()), ElementsAre("warning foreign-subnet nic1 025AE3000002"));
}

TEST_F(Observing, ReversePathFilterHidesAndTheRemedyShows) {
    const Site site("nic0.100", "192.168.1.5/24", {cameraAt(1, "192.168.1.20/24"), cameraAt(2, "10.0.0.9/8")});
    const std::string own = "net.ipv4.conf.nic0/100.rp_filter";
    // 2 drops where there is no route back.
    for (const std::string &settings : {own + "=1", std::string("net.ipv4.conf.all.rp_filter=1"),
                                        own + "=2 net.ipv4.conf.all.rp_filter=1", own + "=2"}) {
        ASSERT_EQ(run("sysctl -qw net.ipv4.conf.all.rp_filter=0 " + own + "=0 " + settings), 0);
        const Diagnosis before = observe();
        EXPECT_THAT(summary(before), ElementsAre("error answers-filtered nic0.100")) << settings;
        const std::vector<std::string> remedies = find(before, "answers-filtered").remedies;
        EXPECT_EQ(run(remedies.at(0)), 0);
        EXPECT_THAT(summary(observe()), ElementsAre("warning foreign-subnet nic0.100 025AE3000002")) << settings;
        // The line for the next start, in a folder of this command's own.
        EXPECT_EQ(run("unshare -m sh -c \"mount -t tmpfs none /etc/sysctl.d && " + remedies.at(1) + " && sysctl -qw " +
                      own +
                      "=1 && sysctl -qp /etc/sysctl.d/60-lanvane.conf && grep -q 0 "
                      "/proc/sys/net/ipv4/conf/nic0.100/rp_filter\" >/dev/null"),
                  0);
    }
}

TEST_F(Observing, FirewallsDropAndAreOpened) {
    const Site site("nic0", "192.168.1.5/24", {cameraAt(1, "192.168.1.20/24"), cameraAt(2, "10.0.0.9/8")});
    const std::string open = "warning foreign-subnet nic0 025AE3000002";
    for (const char *chains :
         {"add chain inet f c { type filter hook input priority 0; policy drop; }; "
          "add rule inet f c tcp dport 22 accept; add rule inet f c ct state established accept",
          "add chain inet f c { type filter hook prerouting priority -300; }; add rule inet f c meta l4proto udp drop",
          "add chain inet f c { type filter hook input priority 0; }; add chain inet f other; "
          "add rule inet f other counter reject; add rule inet f c iifname \"nic0\" jump other; "
          "add chain inet f d { type filter hook prerouting priority 0; }; add rule inet f d udp sport 3000-4000 "
          "drop"}) {
        nft("flush ruleset; add table inet f; " + std::string(chains));
        const Diagnosis before = observe(true);
        EXPECT_THAT(summary(before), ElementsAre("warning answers-blocked", "warning no-answer nic0")) << chains;
        EXPECT_EQ(run(find(before, "answers-blocked").remedies.at(0)), 0);
        EXPECT_THAT(summary(observe(true)), ElementsAre(open)) << chains;
    }
    // A filter that drops, and nothing that it could drop.
    nft("flush ruleset; add table inet f; add chain inet f c { type filter hook input priority 0; policy drop; }");
    site.adapter.cameraSide().ip("link set cam down");
    site.adapter.cameraSide().ip("link set cam up");
    const Site empty("nic1", "192.168.2.5/24", {});
    site.adapter.cameraSide().ip("address flush dev cam");
    EXPECT_THAT(summary(observe(true)), Not(Contains(HasSubstr("answers-blocked"))));
}

TEST_F(Observing, SmallBuffersOverrun) {
    std::vector<camsim::CameraConfig> configs;
    for (unsigned i = 1; i <= 100; ++i)
        configs.push_back(cameraAt(i, "192.168.1." + std::to_string(i + 20) + "/24"));
    const Site site("nic0", "192.168.1.5/24", configs);
    setenv("CORVO_BROADCAST_RECV_BUF_SIZE", "1", 1);
    ASSERT_EQ(Gx::Init(), 0u);
    // A reader that has a core for itself may keep up with the burst of one search.
    Diagnosis before;
    EXPECT_TRUE(eventually([&] { return (before = observe()).observation.overrun > 0; }, 20000));
    EXPECT_THAT(summary(before), Contains("warning answers-overrun"));
    // The limit of the machine is out of a namespace's reach.
    EXPECT_THAT(find(before, "answers-overrun").remedies.at(0),
                StartsWith(before.observation.bufferLimit < 1000000 ? "sysctl -w net.core.rmem_max=1000000"
                                                                    : "export CORVO_BROADCAST_RECV_BUF_SIZE=1000000"));
    setenv("CORVO_BROADCAST_RECV_BUF_SIZE", "1000000", 1);
    ASSERT_EQ(Gx::Init(), 0u);
    EXPECT_THAT(summary(observe()), ElementsAre());
}

TEST_F(Observing, CamerasWithWrongSettings) {
    const Site site(
        "nic0", "192.168.1.5/24",
        {cameraAt(1, "10.0.0.9/8"), cameraAt(2, "192.168.1.22/24", ",reachable=no"), cameraAt(3, "192.168.1.23/16"),
         cameraAt(4, "192.168.1.24/24 via 192.168.2.1"), cameraAt(5, "192.168.1.25/24", ",forced=192.168.1.26/24"),
         cameraAt(6, "192.168.1.27/24", ",enabled=dhcp"), cameraAt(7, "192.168.1.28/24", ",held-by=192.168.1.5:5000")});
    const std::string nic0 = " nic0 025AE300000";
    const Diagnosis before = observe();
    EXPECT_THAT(summary(before),
                UnorderedElementsAre("warning foreign-subnet" + nic0 + "1", "warning unanswering" + nic0 + "2",
                                     "warning mask-differs" + nic0 + "3", "warning gateway-outside" + nic0 + "4",
                                     "warning temporary-address" + nic0 + "5", "warning foreign-subnet" + nic0 + "6",
                                     "warning no-dhcp-answer" + nic0 + "6", "info in-use" + nic0 + "7"));
    // The adapter's way: an address of the camera's subnet.
    EXPECT_EQ(run(find(before, "foreign-subnet").remedies.at(1)), 0);
    ip("address add 169.254.0.1/16 brd + dev nic0");
    const auto after = summary(observe());
    EXPECT_THAT(after, Not(Contains(HasSubstr("foreign-subnet"))));
    EXPECT_THAT(after, Contains("info no-dhcp-answer" + nic0 + "6"));
}

TEST_F(Observing, ListenerSeesWhatTheKernelDrops) {
    const Site site("nic0", "192.168.1.5/24", {cameraAt(1, "192.168.1.20/24"), cameraAt(2, "10.0.0.9/8")});
    const Site twin("nic1", "192.168.7.1/24", {cameraAt(3, "192.168.1.5/24", ",broadcast-ack=always")});
    const std::string listener = grantedListener(folder);
    Diagnosis seen = observe(false, listener);
    EXPECT_THAT(seen.observation.listener.adapters, UnorderedElementsAre("nic0", "nic1"));
    EXPECT_EQ(seen.observation.listener.dropped, 0u);
    EXPECT_THAT(summary(seen), ElementsAre("error address-of-host nic1 025AE3000003", "error hidden nic1 025AE3000003",
                                           "warning foreign-subnet nic0 025AE3000002"));
    EXPECT_THAT(find(seen, "hidden").text, HasSubstr("an address of this host"));

    ASSERT_EQ(run("sysctl -qw net.ipv4.conf.nic0.rp_filter=1"), 0);
    seen = observe(false, listener);
    EXPECT_THAT(summary(seen), Contains("error hidden nic0 025AE3000002"));
    EXPECT_THAT(summary(seen), Contains("error answers-filtered nic0"));
    const auto hidden = std::find_if(seen.observation.cameras.begin(), seen.observation.cameras.end(),
                                     [](const Camera &camera) { return camera.serial == "2"; });
    ASSERT_NE(hidden, seen.observation.cameras.end());
    EXPECT_EQ(hidden->model, "Virtual Camera");
    EXPECT_EQ(hidden->address, 0x0A000009u);
    EXPECT_EQ(hidden->mode, Mode::Static);
    EXPECT_EQ(run(find(seen, "answers-filtered").remedies.at(0)), 0);

    nft("add table inet f; add chain inet f c { type filter hook prerouting priority -300; policy drop; }");
    seen = observe(false, listener);
    EXPECT_THAT(summary(seen), Contains("error answers-blocked"));
    EXPECT_THAT(summary(seen), Contains("error hidden nic0 025AE3000001"));
    EXPECT_EQ(run(find(seen, "answers-blocked").remedies.at(0)), 0);
    EXPECT_THAT(summary(observe(false, listener)), Not(Contains(HasSubstr("answers-blocked"))));
}

TEST_F(Observing, ListenerNeedsItsCapabilityAndKeepsNone) {
    const Site site("nic0", "192.168.1.5/24", {cameraAt(1, "192.168.1.20/24")});
    const std::string listener = grantedListener(folder, "cap_net_admin=p");
    // Root of the namespace would have the capability anyway.
    const std::string plain = "setpriv --reuid 0 --securebits +noroot,+noroot_locked --inh-caps=-all ";
    std::string said = TestFolder::Read(folder / "said");
    EXPECT_NE(run(plain + listener + " nic0 </dev/null >" + std::string(folder / "said")), 0);
    EXPECT_EQ(TestFolder::Read(folder / "said"), "denied " + listener + "\n");

    grantedListener(folder);
    ListenerClient client({"nic0", "none"}, listener);
    client.waitUntilReady(std::chrono::seconds(5));
    EXPECT_EQ(run("test $(for s in $(pgrep -P " + std::to_string(getpid()) +
                  " lanvane-listen); do grep -cE "
                  "'^(Cap(Prm|Eff|Inh|Amb):\\s*0+|NoNewPrivs:\\s*1)$' /proc/$s/status; done) = 5"),
              0);
    const ListenerReport report = client.finish();
    EXPECT_EQ(report.state, ListenerReport::State::Heard);
    EXPECT_THAT(report.adapters, ElementsAre("nic0"));
    EXPECT_EQ(ListenerClient({"nic0"}, "/nonexistent").finish().state, ListenerReport::State::Absent);
    EXPECT_TRUE(ListenerClient({"nic0"}, "/bin/cat").finish().seen.empty());
}

class FreeAddressTest : public Observing {
protected:
    static commissioning::Adapter adapterNamed(const std::string &name) {
        const auto all = surveyAdapters();
        return *std::find_if(all.begin(), all.end(), [&](const auto &adapter) { return adapter.name == name; });
    }
};

TEST_F(FreeAddressTest, NobodyHasIt) {
    const Site site("nic0", "192.168.1.5/29", {cameraAt(1, "10.0.0.6/8"), cameraAt(2, "10.0.0.3/8")});
    site.adapter.cameraSide().ip("address add 192.168.1.2/29 dev cam"); // a neighbour that is no camera
    ip("route add 10.9.0.0/16 via 192.168.1.3");
    const Inventory host = inventoryOf(observe());
    Inventory inventory = host;
    const commissioning::Adapter nic0 = adapterNamed("nic0");
    const AdapterAddress subnet = nic0.addresses.at(0);
    const auto take = [&](FreeAddresses &free, const std::vector<Address> &presents) {
        std::vector<std::string> texts;
        for (const auto &address : free.take(nic0, subnet, presents))
            texts.push_back(address ? toText(*address) : "none");
        return texts;
    };
    // .1, .4 and .6 remain of six: .2 answers, .3 is a gateway, .5 the host. Who has .1 answers late.
    std::thread late([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(1200));
        site.adapter.cameraSide().ip("address add 192.168.1.1/29 dev cam");
    });
    FreeAddresses free(inventory);
    EXPECT_THAT(take(free, {0x0A000006, 0x0A000003}), ElementsAre("192.168.1.6", "192.168.1.4"));
    late.join();
    EXPECT_THAT(take(free, {0x0A000006}), ElementsAre("none"));
    inventory.cameras[0].stored = StoredAddresses{0xC0A80106, 0, 0};
    FreeAddresses other(inventory);
    other.exclude(0xC0A80101);
    EXPECT_THAT(take(other, {0x0A000006, 0}), ElementsAre("192.168.1.4", "none"));
    EXPECT_EQ(FreeAddresses(inventory).take(nic0, subnet, {0}, [] { return true; }).at(0), std::nullopt);
    site.adapter.cameraSide().ip("link set cam down"); // everything would be found to be free
    EXPECT_EQ(FreeAddresses(inventory).take(nic0, subnet, {0}).at(0), std::nullopt);
}

/// Also when the kernel's table forgets them meanwhile, as one does that is crowded.
TEST_F(FreeAddressTest, MoreThanOneSocketCanAskForAreKnown) {
    const Site site("nic0", "192.168.0.1/23", {});
    site.adapter.cameraSide().ip("address add 192.168.0.250/23 dev cam");
    std::vector<Address> addresses;
    for (Address each = 0xC0A80002; each < 0xC0A80002 + 300; ++each)
        addresses.push_back(each);
    const commissioning::Adapter nic0 = adapterNamed("nic0");
    const AdapterAddress subnet = nic0.addresses.at(0);
    ip("neighbour add 192.168.0.249 lladdr 02:00:00:00:00:41 nud stale dev nic0");
    std::thread crowd([] {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        ip("neighbour flush dev nic0");
    });
    const Neighbourhood found = neighbourhoodOf(nic0, subnet, addresses);
    crowd.join();
    EXPECT_EQ(found.free.size(), 298u);
    EXPECT_EQ(found.taken.size(), 2u);
    ip("neighbour flush dev nic0");
    EXPECT_THAT(stillThere(nic0, subnet, found).taken, ElementsAre(Pair(0xC0A800FA, testing::SizeIs(12))));
}

} // namespace
