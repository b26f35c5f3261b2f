#include "Layer.h"
#include "support/Leaks.h"
#include "support/Site.h"

#include <sys/resource.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <system_error>

using namespace Corvo;
using namespace testnet;
using testing::HasSubstr;

namespace {

using Verdict = std::pair<bool, EDeviceAccessiblityInfo>; // accessible, and why not

class Accessibility : public LayerTest {
protected:
    static Verdict probe(const CDeviceInfo &info, AccessModeSet modes = AccessModeSet(Control)) {
        auto reason = static_cast<EDeviceAccessiblityInfo>(-1);
        const bool accessible = layer().IsDeviceAccessible(info, modes, &reason);
        EXPECT_EQ(accessible, layer().IsDeviceAccessible(info, modes));
        return {accessible, reason};
    }
    static CDeviceInfo find(const std::string &serial) {
        DeviceInfoList list;
        layer().EnumerateAllDevices(list);
        for (const CDeviceInfo &device : list) {
            if (device.GetSerialNumber() == serial.c_str())
                return device;
        }
        throw std::out_of_range(serial);
    }

    Site site{"nic0",
              "192.168.1.5/24",
              {cameraAt(1, "192.168.1.21/24"), cameraAt(2, "192.168.1.22/24", ",held-by=192.168.1.200:5555"),
               cameraAt(3, "192.168.1.23/24", ",held-by=192.168.1.200:5555 exclusive"),
               cameraAt(4, "192.168.1.24/24", ",reachable=no"), cameraAt(5, "172.16.0.9/16"),
               cameraAt(6, "192.168.1.26/24"), cameraAt(7, "192.168.1.27/24", ",model=Twin"),
               cameraAt(8, "192.168.1.28/24", ",model=Twin")}};
};

TEST_F(Accessibility, VerdictsAndTheirCauses) {
    const AccessModeSet stream(Stream);
    const AccessModeSet exclusive = Stream | Exclusive;
    const struct {
        const char *serial;
        AccessModeSet modes;
        Verdict verdict;
    } cases[] = {
        {"1", Control, {true, Accessibility_Ok}},
        {"2", Control, {false, Accessibility_Opened}},
        {"2", exclusive, {false, Accessibility_Opened}},
        {"2", stream, {true, Accessibility_Opened}},
        {"3", stream, {false, Accessibility_OpenedExclusively}},
        {"4", stream, {false, Accessibility_NotReachable}}, // does not answer
        {"5", stream, {false, Accessibility_NotReachable}}, // foreign subnet
    };
    for (const auto &row : cases) {
        const CDeviceInfo device = find(row.serial);
        const Holdings before = Holdings::now();
        EXPECT_EQ(row.verdict, probe(device, row.modes)) << row.serial << " " << row.modes;
        EXPECT_TRUE(eventually([&] { return before == Holdings::now(); })) << row.serial;
    }
    // An exclusive holder is told of but reading is not denied: no definite verdict.
    for (const std::uint32_t privilege : {1u, 3u, 0xFFFFFFFDu}) {
        site.cameras.writeRegister(camera(6).mac, GEV_REG_CONTROL_CHANNEL_PRIVILEGE, privilege);
        EXPECT_EQ((Verdict{false, Accessibility_Unknown}), probe(find("6"), stream)) << privilege;
    }
    // One that was changed no longer names the device that was found.
    CDeviceInfo modified = find("1");
    modified.SetPropertyValue("Note", "added properties do not matter");
    EXPECT_EQ((Verdict{true, Accessibility_Ok}), probe(modified));
    modified.SetSerialNumber("2");
    EXPECT_EQ((Verdict{false, Accessibility_Unknown}), probe(modified));

    const auto requests = site.cameras.requests();
    EXPECT_TRUE(std::none_of(requests.begin(), requests.end(),
                             [](const auto &request) { return request.command() == TAG_WRITEREG_CMD; }));
}

TEST_F(Accessibility, WhatTheHostLacksIsNotBlamedOnTheCamera) {
    const CDeviceInfo device = find("1");
    EXPECT_EQ((Verdict{true, Accessibility_Ok}), probe(device));
    // A sanitizer looks at each type once, by a pipe: before there is none.
    const std::string tooMany = std::generic_category().message(EMFILE);
    EXPECT_EQ("", layer().GetLastHostProblem());
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit none{3, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    const Verdict verdict = probe(device);
    const String_t problemOfProbe = layer().GetLastHostProblem();
    DeviceInfoList list;
    layer().EnumerateAllDevices(list);
    const String_t problemOfSearch = layer().GetLastHostProblem();
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ((Verdict{false, Accessibility_Unknown}), verdict);
    EXPECT_EQ(tooMany, problemOfProbe);
    EXPECT_EQ(tooMany, problemOfSearch);
    EXPECT_EQ((Verdict{true, Accessibility_Ok}), probe(device));
    EXPECT_EQ("", layer().GetLastHostProblem());
}

/// It answers each request with acknowledges of the one before, for as long as anybody listens.
TEST_F(LayerTest, LooksAtACameraForTwoSecondsAtMost) {
    ScriptedPeer peer([](const Bytes &request, std::size_t) {
        return std::vector<Bytes>(2200, acknowledge(request, 0, 0x0081, Bytes(4), -1));
    });
    GEV_DISCOVERY_INFO answer{};
    const sockaddr address = AsSockaddr(peer.address());
    const auto start = std::chrono::steady_clock::now();
    EDeviceAccessiblityInfo reason{};
    EXPECT_FALSE(layer().IsDeviceAccessible(CQuorelGigEDeviceInfoImpl(address, &answer, address), Control, &reason));
    EXPECT_EQ(Accessibility_NotReachable, reason);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_GT(elapsed.count(), 1.9);
    EXPECT_LT(elapsed.count(), 3.0);
}

TEST_F(Accessibility, HeartbeatOfTheEnvironmentCounts) {
    const CDeviceInfo device = find("1");
    setenv("CORVO_GIGE_HEARTBEAT", "499", 1); // less than a channel accepts
    EXPECT_EQ((Verdict{false, Accessibility_NotReachable}), probe(device));
    setenv("CORVO_GIGE_HEARTBEAT", "4294967296", 1); // 3000 ms
    EXPECT_EQ((Verdict{true, Accessibility_Ok}), probe(device));
}

TEST_F(Accessibility, ResolvesInfosMadeByTheCaller) {
    const auto layerError = [](const CDeviceInfo &info) { return thrownBy([&] { layer().IsDeviceAccessible(info); }); };
    const auto factoryError = [](const CDeviceInfo &info) {
        return thrownBy([&] { factory().IsDeviceAccessible(info); });
    };
    EXPECT_EQ((Verdict{true, Accessibility_Ok}), probe(infoWith({{"SerialNumber", "1"}})));
    EXPECT_TRUE(factory().IsDeviceAccessible(infoWith({{"SerialNumber", "1"}})));

    const CDeviceInfo twins = infoWith({{"ModelName", "Twin"}});
    const CDeviceInfo nobody = infoWith({{"ModelName", "Nobody"}});
    const std::string noDevice = "Runtime: No device is available or no device contains the provided device info "
                                 "properties";
    EXPECT_EQ("Runtime: Too many devices (2) match the provided device info properties, don't know which device to "
              "use.",
              layerError(twins));
    EXPECT_EQ("Runtime: Ambiguous device info properties. 2 devices match the provided device info properties.",
              factoryError(twins));
    EXPECT_EQ(noDevice, layerError(nobody));
    EXPECT_EQ(noDevice + ".", factoryError(nobody));
    EXPECT_EQ("Runtime: The device class QuorelUsb is not supported by this transport layer. This transport layer "
              "supports QuorelGigE.",
              layerError(infoWith({{"DeviceClass", "QuorelUsb"}})));
    EXPECT_THAT(trace(), HasSubstr("corvo.base.TL Too many devices (2)"));
    EXPECT_THAT(trace(), HasSubstr("corvo.base.TlFactory Ambiguous"));
}

TEST_F(Accessibility, AsksByUnicastForAnAddressOfTheCaller) {
    CQuorelGigEDeviceInfo info;
    info.SetIpAddress("192.168.1.21");
    EXPECT_EQ((Verdict{true, Accessibility_Ok}), probe(info));
    for (const auto &request : site.cameras.requests())
        EXPECT_EQ("192.168.1.21", request.destination.toString());
    EXPECT_EQ((Verdict{true, Accessibility_Ok}), probe(infoWith({{"IpAddress", "192.168.1.21"}}))); // without port
    info.SetSerialNumber("2");
    EXPECT_EQ("Runtime: The found device does not contain all the provided device info properties.",
              thrownBy([&] { probe(info); }));
    info.SetIpAddress("192.168.1.99");
    EXPECT_EQ("Runtime: Failed to discover GigE device '192.168.1.99:3956'", thrownBy([&] { probe(info); }));
    info.SetIpAddress("172.16.0.9"); // no route to it
    EXPECT_EQ("Runtime: Failed to discover GigE device '172.16.0.9:3956'", thrownBy([&] { probe(info); }));
    EXPECT_THAT(trace(), testing::Not(HasSubstr("Failed to enumerate")));
}

} // namespace
