#include "commissioning/AddressText.h"
#include "commissioning/Findings.h"

#include <functional>
#include <gmock/gmock.h>

using namespace commissioning;
using testing::IsEmpty;

namespace {

/// A host in good order, with one camera: eth0 at 192.168.1.5/24 and eth1, which is a spare.
Observation healthy() {
    Observation host;
    const auto adapter = [&](const char *name, int index, Address address) {
        Adapter result;
        result.name = name;
        result.index = index;
        result.isUp = result.hasCarrier = result.canBroadcast = true;
        result.addresses = {{address, 0xFFFFFF00}};
        host.searched.insert(name);
        return result;
    };
    host.adapters = {adapter("eth0", 1, 0xC0A80105), adapter("eth1", 2, 0x0A010105)};
    host.adapters[1].kind = LinkKind::Wireless;
    host.searched = {"eth0"};
    Camera camera;
    camera.mac = "025AE3000001";
    camera.adapters = {"eth0"};
    camera.address = 0xC0A80114;
    camera.mask = 0xFFFFFF00;
    camera.mode = Mode::Static;
    camera.status = Status::Ok;
    camera.stored = StoredAddresses{camera.address, camera.mask, 0};
    host.cameras = {camera};
    host.quiet = Counters();
    return host;
}

/// The findings, each as severity, code and remedies.
std::vector<std::string> told(const Observation &host) {
    std::vector<std::string> lines;
    for (const Finding &finding : findingsOf(host)) {
        std::string line = "EWI"[static_cast<std::size_t>(finding.severity)] + (" " + finding.code);
        for (const std::string &remedy : finding.remedies)
            line += " | " + remedy;
        lines.push_back(line);
    }
    return lines;
}

void finds(const std::vector<std::string> &expected, const std::function<void(Observation &)> &spoil) {
    Observation host = healthy();
    EXPECT_THAT(told(host), IsEmpty());
    spoil(host);
    EXPECT_THAT(told(host), testing::ElementsAreArray(expected));
}

void hide(Observation &host) {
    host.cameras[0].hidden = true;
    host.cameras[0].status = Status::Unknown;
}

TEST(Findings, OfAdapters) {
    finds({"W no-adapter"}, [](auto &host) {
        for (Adapter &adapter : host.adapters)
            adapter.canBroadcast = false;
        host.searched.clear();
    });
    finds({"W link-down | sudo ip link set dev eth0 up"}, [](auto &host) { host.adapters[0].isUp = false; });
    finds({"I link-down | nmcli device connect eth1"}, [](auto &host) {
        host.adapters[0].kind = host.adapters[1].kind = LinkKind::Physical;
        host.adapters[1].isUp = false;
        host.connections["eth1"] = "";
        host.isRoot = true;
    });
    finds({"W no-carrier"}, [](auto &host) { host.adapters[0].hasCarrier = false; });
    finds({}, [](auto &host) { // a bridge that waits for ports
        host.adapters[1].kind = LinkKind::Bridge;
        host.adapters[1].hasCarrier = false;
    });
    finds(
        {"W no-answer",
         "I no-ipv4 | sudo nmcli connection modify 'Wired connection 1' +ipv4.addresses 192.168.11.1/24 && sudo nmcli "
         "device reapply eth0"},
        [](auto &host) {
            host.adapters[0].addresses.clear();
            host.adapters[1].addresses = {{0xC0A80A07, 0xFFFFFF00}};
            host.connections["eth0"] = "Wired connection 1";
            host.cameras.clear();
            host.searched = {"eth1"};
        });
    finds({}, [](auto &host) { host.adapters[1].addresses.clear(), host.adapters[1].isPort = true; });
    finds({"W same-subnet-twice | sudo ip address add 172.20.0.1/24 brd + dev eth0 && sudo ip address delete "
           "192.168.1.5/24 dev eth0"},
          [](auto &host) {
              host.adapters[1].addresses = {{0xC0A80107, 0xFFFF0000}};
              host.routes = {{0, 0, 2, "eth1", 0xC0A801FE, false}}; // keeps its address
          });
    finds({"I no-answer"}, [](auto &host) { host.searched = {"eth0", "eth1"}; });
    finds({"W no-answer | sudo firewall-cmd --add-source-port=3956/udp | sudo firewall-cmd --permanent "
           "--add-source-port=3956/udp"},
          [](auto &host) {
              host.cameras.clear();
              host.firewall.manager = Firewall::Manager::Firewalld;
              host.firewall.drops = true;
          });
}

TEST(Findings, OfWhatWasDropped) {
    const std::string off =
        " | sudo sysctl -w net.ipv4.conf.all.rp_filter=0 net.ipv4.conf.eth0.rp_filter=0 | printf "
        "'%s\\n' 'net.ipv4.conf.all.rp_filter = 0' 'net.ipv4.conf.eth0.rp_filter = 0' | sudo tee -a "
        "/etc/sysctl.d/60-lanvane.conf";
    const auto dropping = [](Observation &host, std::int64_t during, std::int64_t quiet) {
        host.firewall = {Firewall::Manager::Ufw, true, true, false, {}};
        host.during.received = during;
        host.quiet->received = quiet;
    };
    const std::string ufw = "W answers-blocked | sudo ufw allow proto udp from any port 3956";
    finds({"I filter-on" + off}, [](auto &host) { host.adapters[0].rpFilter = 2; });
    finds({}, [](auto &host) {
        host.adapters[0].rpFilter = 2;
        host.during.filtered = 9;
        host.routes = {{0, 0, 2, "eth1", 0, false}};
    });
    finds({"E answers-filtered" + off}, [](auto &host) {
        host.adapters[0].rpFilter = 1;
        host.during.filtered = 12;
    });
    finds({}, [](auto &host) { host.during.filtered = 12; }); // by an adapter that no search uses
    finds({ufw}, [&](auto &host) { dropping(host, 3, 0); });
    finds({}, [&](auto &host) { dropping(host, 130, 100); }); // varies by chance
    finds({ufw}, [&](auto &host) { dropping(host, 160, 100); });
    finds({}, [&](auto &host) { dropping(host, 3, 0), host.quiet.reset(); });
    finds({}, [&](auto &host) { dropping(host, 3, 0), host.during.broadcasts = 3; }); // its own requests
    finds({}, [&](auto &host) { dropping(host, 3, 0), host.firewall.drops = false; });
    finds(
        {"W answers-overrun | sudo sysctl -w net.core.rmem_max=1000000 | printf '%s\\n' 'net.core.rmem_max = 1000000' "
         "| sudo tee -a /etc/sysctl.d/60-lanvane.conf"},
        [](auto &host) { host.overrun = 4; });
    finds({"W neighbours-full | sudo sysctl -w net.ipv4.neigh.default.gc_thresh2=4096 "
           "net.ipv4.neigh.default.gc_thresh3=8192 | printf '%s\\n' 'net.ipv4.neigh.default.gc_thresh2 = 4096' "
           "'net.ipv4.neigh.default.gc_thresh3 = 8192' | sudo tee -a /etc/sysctl.d/60-lanvane.conf"},
          [](auto &host) { host.during.tableFulls = 1, host.cameras[0].status = Status::NotReachable; });
    finds({"I listener-denied | sudo setcap cap_net_raw=p '/opt/my tools/listen'"}, [](auto &host) {
        host.listener.state = ListenerReport::State::Denied;
        host.listener.program = "/opt/my tools/listen";
    });
    finds({"E answers-blocked | sudo nft list ruleset",
           "E hidden | sudo nft list ruleset | lanvanectl rescue 02:5A:E3:00:00:01"},
          [](auto &host) { hide(host); });
    finds({"E hidden | export CORVO_BROADCAST_RECV_BUF_SIZE=1000000",
           "W answers-overrun | export CORVO_BROADCAST_RECV_BUF_SIZE=1000000"},
          [](auto &host) { hide(host), host.overrun = 1, host.bufferLimit = 4000000; });
}

TEST(Findings, OfCameras) {
    const std::string rescue = " | lanvanectl rescue 02:5A:E3:00:00:01";
    const auto second = [](Observation &host) -> Camera & {
        host.cameras.push_back(host.cameras[0]);
        host.cameras[1].mac = "025AE3000002";
        host.cameras[1].address = 0xC0A80115;
        host.cameras[1].stored.reset();
        return host.cameras[1];
    };
    finds({"W foreign-subnet" + rescue + " | sudo ip address add 192.168.2.2/24 brd + dev eth0"},
          [](auto &host) { host.cameras[0].address = host.cameras[0].stored->address = 0xC0A80201; });
    finds({"W foreign-subnet" + rescue + " | sudo ip address add 192.168.2.1/24 brd + dev eth0"},
          [](auto &host) { // a way over a gateway is no news
              host.cameras[0].address = host.cameras[0].stored->address = 0xC0A80202;
              host.routeTo[0xC0A80202] = {0, 0, 2, "eth1", 0x0A010101, false};
          });
    finds({"W routed-elsewhere | sudo ip route replace 192.168.1.20/32 dev eth0"},
          [](auto &host) { host.routeTo[0xC0A80114] = {0, 0, 2, "eth1", 0x0A010101, false}; });
    finds({}, [](auto &host) { host.routeTo[0xC0A80114] = {0, 0, 1, "eth0", 0, false}; });
    finds({"W unanswering" + rescue}, [](auto &host) { host.cameras[0].status = Status::NotReachable; });
    finds({"E duplicate-address" + rescue, "E duplicate-address | lanvanectl rescue 02:5A:E3:00:00:02"},
          [&](auto &host) { second(host).address = 0xC0A80114; });
    finds({}, [&](auto &host) { // a factory's address, which DHCP overrides, and another one's
        second(host).stored = StoredAddresses{0xC0A80114, 0, 0};
        host.cameras[1].mode = Mode::Dhcp;
    });
    finds({"E address-of-host" + rescue,
           "W temporary-address | lanvanectl set 02:5A:E3:00:00:01 static 192.168.1.20/24 | "
           "lanvanectl restart 02:5A:E3:00:00:01"},
          [](auto &host) { host.cameras[0].stored->address = 0x0A010105; });
    finds({}, [](auto &host) {
        host.answers = {{"A", 1, "v", "m", "1"}, {"A", 1, "v", "m", "1"}, {"B", 1, "v", "m", "1"}};
    });
    finds({"E duplicate-mac"}, [](auto &host) { host.answers = {{"A", 1, "v", "m", "1"}, {"A", 1, "v", "m", "2"}}; });
    finds({"W mask-differs | lanvanectl set 02:5A:E3:00:00:01 static 192.168.1.20/24 --gateway 192.168.1.254"},
          [](auto &host) { host.cameras[0].mask = 0xFFFF0000, host.cameras[0].gateway = 0xC0A801FE; });
    finds({"W gateway-outside | lanvanectl set 02:5A:E3:00:00:01 static 192.168.1.20/24 --gateway 192.168.1.253"},
          [](auto &host) {
              host.cameras[0].gateway = 0xC0A802FE;
              host.routes = {{0, 0, 1, "eth0", 0xC0A801FD, false}};
          });
    finds({"I no-dhcp-answer" + rescue + " --static"}, [](auto &host) {
        host.adapters[0].addresses.push_back({0xA9FE0001, 0xFFFF0000});
        host.cameras[0].mode = Mode::Dhcp;
        host.cameras[0].address = 0xA9FE0101;
        host.cameras[0].mask = 0xFFFF0000;
    });
    finds({"I in-use"}, [](auto &host) {
        host.cameras[0].status = Status::InUse;
        host.cameras[0].holder = Holder{0xC0A80105, 4000, Process{12, "viewer"}};
    });
    finds({}, [](auto &host) { // the search was answered by way of a router
        host.cameras[0].adapters.clear();
        host.cameras[0].address = host.cameras[0].stored->address = 0x08080808;
        host.searched.clear();
    });
}

} // namespace
