#include "ScriptedChannel.h"
#include "gxapi/Enumerator.h"
#include "gxapi/ForceIp.h"
#include "gxapi/SetIpConfiguration.h"
#include "gxapi/StopToken.h"

using Gx::ControlChannel;
using Gx::CStopScope;
using Gx::CStopToken;

namespace {

const SocketAddress Address("10.0.0.50");
constexpr std::uint8_t NoMac[6] = {};

GXSTATUS discover() {
    return Gx::Enumerator::Discover(nullptr, 5000, Gx::Enumerator::FlagBroadcastAcknowledge, nullptr);
}

/// Asks for the stop after 120 ms of the scripted clock.
void expectStopped(ScriptedNetwork &network, const std::function<GXSTATUS()> &work) {
    CStopToken token;
    const CStopScope scope(&token);
    const std::uint64_t start = network.now_ms();
    network.onTime = [&] {
        if (network.now_ms() - start >= 120)
            token.RequestStop();
    };
    EXPECT_EQ(work(), GX_E_ABORTED);
    network.onTime = nullptr;
    EXPECT_GE(network.now_ms() - start, 120u);
    EXPECT_LE(network.now_ms() - start, 170u);
}

TEST(Stop, EndsBroadcastCommandsFloodedOrNot) {
    const std::function<GXSTATUS()> commands[] = {
        discover, [] { return Gx::ForceIp(NoMac, Address, Address, Address, 0); },
        [] { return Gx::SetIpConfiguration(NoMac, {}, Address, Address, nullptr, nullptr, true, 3000); }};
    for (const auto &command : commands) {
        for (const bool isFlooded : {false, true}) {
            ScriptedNetwork network([&](const Bytes &) {
                for (std::uint32_t i = 0; i < 300 && isFlooded; ++i)
                    network.answer({'x'}, i);
                return 0;
            });
            expectStopped(network, command);
        }
        int sent = 0;
        ScriptedNetwork network([&sent](const Bytes &) { return ++sent, 0; });
        CStopToken token;
        token.RequestStop();
        const CStopScope scope(&token);
        EXPECT_EQ(command(), GX_E_ABORTED);
        EXPECT_EQ(sent, 0);
    }
}

TEST(Stop, EndsATransactionAndLeavesTheChannelUsable) {
    for (const bool isFlooded : {false, true}) {
        ScriptedChannel channel(
            [isFlooded](const Bytes &request, std::size_t number) {
                Answers answers;
                for (std::uint32_t i = 0; i < 500 && isFlooded && number == 0; ++i)
                    answers.emplace_back(acknowledge(request, 0, 0x0081, {9, 9, 9, 9}, -1), i);
                answers.emplace_back(Device().answer(request), number == 0 ? 1000 : 0);
                return answers;
            },
            Device(), GEV_CONTROL_ACCESS);
        channel.setProperty(ControlChannel::ReadRegTimeout, 600000);
        expectStopped(channel.network, [&] { return channel.read(0x1000); });
        EXPECT_EQ(channel.read(0x2000), 0u); // what comes late counts as outdated
        EXPECT_EQ(channel.value, 0x2000u);

        CStopToken token;
        token.RequestStop();
        const CStopScope scope(&token);
        const std::size_t before = channel.requests().size();
        EXPECT_EQ(channel.read(), GX_E_ABORTED);
        EXPECT_EQ(channel.requests().size(), before);
        channel.destroy();
        EXPECT_TRUE(isRelease(channel.requests().back()));
        EXPECT_EQ(channel.lost, 0);
    }
}

} // namespace
