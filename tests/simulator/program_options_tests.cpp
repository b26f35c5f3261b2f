#include "camsim/ProgramOptions.h"

#include <gmock/gmock.h>

#include <fstream>

using namespace camsim;

namespace {

TEST(ProgramOptions, DescribeTheSimulation) {
    const std::string path = testing::TempDir() + "camsim-options.scene";
    std::ofstream(path) << "[camera]\nmac = 025AE3010210\n[faults]\ngarbage = 5\nduplicate = 7\n";
    const auto options =
        ProgramOptions::parse({"--interface=cam0", "--scene", path, "--camera", "mac=025AE3010211,count=2",
                               "--camera=mac=025AE3010220", "--seed", "0x10"});
    EXPECT_EQ(options.simulator.interface, "cam0");
    EXPECT_EQ(options.simulator.mode, AddressMode::Managed);
    EXPECT_EQ(options.simulator.port, GVCP_PORT);
    EXPECT_EQ(options.simulator.seed, 16u);
    EXPECT_EQ(options.scene.faults.duplicate, 7);
    std::vector<std::uint64_t> macs;
    for (const CameraConfig &camera : options.scene.cameras)
        macs.push_back(camera.mac.toNumber());
    EXPECT_EQ(macs, (std::vector<std::uint64_t>{0x025AE3010210, 0x025AE3010211, 0x025AE3010212, 0x025AE3010220}));

    const auto faults = ProgramOptions::parse({"--interface", "cam0", "--faults", "garbage=50", "--scene", path}).scene;
    EXPECT_EQ(faults.faults.garbage, 50); // the option goes before the scene
    EXPECT_EQ(faults.faults.duplicate, 0);
    std::remove(path.c_str());

    const auto plain = ProgramOptions::parse({"--unmanaged", "--port", "0"});
    EXPECT_EQ(plain.simulator.interface, "lo");
    EXPECT_EQ(plain.simulator.mode, AddressMode::Unmanaged);
    EXPECT_EQ(plain.simulator.port, 0);
    EXPECT_EQ(plain.scene.cameras.size(), 1u);
    EXPECT_TRUE(ProgramOptions::parse({"--help"}).help);
    EXPECT_TRUE(ProgramOptions::parse({"--version"}).version);
}

TEST(ProgramOptions, ErrorsNameTheOptionAndWhatWasExpected) {
    const std::pair<std::vector<std::string>, const char *> cases[] = {
        {{}, "--interface.*network interface"},
        {{"--interface", "cam0", "--port", "1"}, "--port.*--unmanaged"},
        {{"--unmanaged", "--port", "65536"}, "--port.*65536.*65535"},
        {{"--unmanaged=yes"}, "--unmanaged.*no value"},
        {{"--seed", "x"}, "--seed.*x"},
        {{"--seed"}, "--seed.*missing.*number"},
        {{"--camera", "mac=1"}, "--camera.*mac.*MAC address"},
        {{"--colour"}, "--colour"},
    };
    for (const auto &[arguments, message] : cases)
        EXPECT_THAT([&arguments = arguments] { ProgramOptions::parse(arguments); },
                    testing::ThrowsMessage<UsageError>(testing::ContainsRegex(message)));
}

} // namespace
