#include "Operations.h"

#include <sys/resource.h>

using namespace commissioning;
using namespace testnet;
using testing::ElementsAre;

namespace {

using Searching = Operations;

std::string describe(const Camera &camera) {
    const char *const statuses[] = {"ok", "in use", "not reachable", "unknown"};
    std::string text = camera.serial + " " + toText(camera.address) + " " + statuses[static_cast<int>(camera.status)];
    for (const std::string &adapter : camera.adapters)
        text += " " + adapter;
    if (camera.stored)
        text += " stored " + toText(camera.stored->address) + " " + toText(camera.stored->mask) + " " +
                toText(camera.stored->gateway);
    return text;
}

TEST_F(Searching, CamerasAsPlainValues) {
    start({cameraAt(1, "192.168.10.21/24 via 192.168.10.254", ",forced=192.168.10.77/24"),
           cameraAt(2, "192.168.10.22/24", ",held-by=192.168.10.200:5555"),
           cameraAt(3, "192.168.10.23/24", ",held-by=192.168.10.200:5555 exclusive"), cameraAt(4, "172.16.0.9/16"),
           cameraAt(5, "192.168.10.25/24", ",options=dhcp+lla,enabled=dhcp+lla")});
    std::vector<std::string> texts;
    for (const Camera &camera : inventoryOf(devices).cameras)
        texts.push_back(describe(camera));
    std::sort(texts.begin(), texts.end());
    EXPECT_THAT(texts, ElementsAre("1 192.168.10.77 ok nic0 stored 192.168.10.21 255.255.255.0 192.168.10.254",
                                   "2 192.168.10.22 in use nic0 stored 192.168.10.22 255.255.255.0 0.0.0.0",
                                   "3 192.168.10.23 in use nic0", "4 172.16.0.9 not reachable nic0",
                                   testing::HasSubstr("5 169.254.")));
    const Camera held = cameraOf(device(2));
    EXPECT_EQ(Mode::Static, held.mode);
    ASSERT_TRUE(held.holder);
    EXPECT_EQ("192.168.10.200 5555", toText(held.holder->address) + " " + std::to_string(held.holder->port));
    EXPECT_FALSE(cameraOf(device(1)).holder);
    EXPECT_THAT(cameraOf(device(5)).modes, ElementsAre(Mode::Dhcp, Mode::Auto));
    EXPECT_EQ(0u, status(1).requests.count(TAG_WRITEREG_CMD));
}

TEST_F(Searching, AtOneAddressTheOtherCameraIsNotReadForThisOne) {
    start({cameraAt(1, "192.168.10.21/24"), cameraAt(2, "192.168.10.21/24 via 192.168.10.254")}); // the first answers
    EXPECT_TRUE(cameraOf(device(1)).stored);
    EXPECT_FALSE(cameraOf(device(2)).stored);
}

TEST_F(Searching, WithFewDescriptorsNoCameraIsBlamed) {
    Cameras cameras;
    for (unsigned i = 0; i < 60; ++i)
        cameras.push_back(cameraAt(i, "192.168.10." + std::to_string(20 + i) + "/24"));
    start(cameras);
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit few{32, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    devices = search(layer());
    setrlimit(RLIMIT_NOFILE, &limit);
    for (const Camera &camera : inventoryOf(devices).cameras)
        EXPECT_EQ(Status::Ok, camera.status) << camera.serial;
    EXPECT_EQ(60u, devices.size());
}

} // namespace
