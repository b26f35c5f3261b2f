#include "MinimalCorvo/DeviceAccessMode.h"

#include <gmock/gmock.h>

namespace {

using namespace Corvo;

TEST(AccessModeSet, HoldsAModeAtTheBitOfItsValue) {
    EXPECT_TRUE(AccessModeSet().none());
    EXPECT_EQ(0b100010u, (Control | Exclusive).to_ulong());
    EXPECT_EQ(0b101010u, (Control + Exclusive + Stream).to_ulong());
    const AccessModeSet modes = Control | Event | Control;
    EXPECT_EQ(modes, modes + Event);
    EXPECT_EQ(0b110010u, AccessModeSet(modes | AccessModeSet(Exclusive)).to_ulong());
}

TEST(AccessModeSet, RefusesAModeThatIsNoBit) {
    for (const int value : {6, 64, -1}) {
        const auto mode = static_cast<EDeviceAccessMode>(value);
        const auto refusal = testing::ThrowsMessage<std::out_of_range>(testing::StartsWith("bitset::set"));
        EXPECT_THAT([mode] { (void)AccessModeSet(mode); }, refusal);
        EXPECT_THAT([mode] { (void)(Control | mode); }, refusal);
        EXPECT_THAT([mode] { (void)(AccessModeSet() + mode); }, refusal);
    }
}

} // namespace
