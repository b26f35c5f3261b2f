#include "MinimalCorvo/DeviceAccessMode.h"

#include <gmock/gmock.h>

namespace {

using namespace Corvo;

TEST(AccessModeSet, HoldsAModeAtTheBitOfItsValue) {
    EXPECT_EQ(0b100010u, (Control | Exclusive).to_ulong());
    EXPECT_EQ(0b011010u, (AccessModeSet() + Control + Stream + Event + Event).to_ulong());
    AccessModeSet modes = Control;
    modes |= Stream;
    EXPECT_TRUE(modes == (Control | Stream) && AccessModeSet(Stream) == Stream && modes != Stream);
}

TEST(AccessModeSet, RefusesAModeThatIsNoBit) {
    const auto refusal = testing::ThrowsMessage<std::out_of_range>(testing::StartsWith("bitset::set"));
    for (const int value : {6, -1}) {
        const auto mode = static_cast<EDeviceAccessMode>(value);
        EXPECT_THAT([mode] { (void)AccessModeSet(mode); }, refusal);
        EXPECT_THAT([value] { (void)AccessModeSet(value); }, refusal);
        EXPECT_THAT([mode] { (void)(Control | mode); }, refusal);
    }
}

} // namespace
