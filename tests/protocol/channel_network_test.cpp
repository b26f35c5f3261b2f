#include "ScriptedChannel.h"
#include "support/Namespace.h"

namespace {

TEST(Channel, OutlivesFailedSends) {
    ScriptedChannel channel([](const Bytes &request, std::size_t number) {
        if (number > 0)
            return good(request);
        testnet::ip("address delete 127.0.0.1/8 dev lo"); // the request cannot be sent again
        return Answers{};
    });
    EXPECT_EQ(channel.read(), 0xE1020000u | ENETUNREACH);
    EXPECT_EQ(channel.read(), 0xE1020000u | ENETUNREACH);
    testnet::ip("address add 127.0.0.1/8 dev lo");
    EXPECT_EQ(channel.read(), 0u);
    EXPECT_EQ(channel.requests().size(), 2u);
    channel.destroy();
    EXPECT_EQ(channel.lost, 0);
}

} // namespace
