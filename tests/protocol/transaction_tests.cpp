#include "ScriptedChannel.h"
#include "support/Leaks.h"
#include "support/TraceLog.h"

#include <numeric>

using Gx::ControlChannel;

namespace {

std::uint16_t requestId(const Bytes &request) { return static_cast<std::uint16_t>(request[6] << 8 | request[7]); }

TEST(Transaction, AcknowledgeIsJudged) {
    const struct {
        const char *what;
        std::uint16_t deviceStatus;
        int idOffset;
        std::size_t size;
        int older; // acknowledges sent first, more than attempts are allowed
        GXSTATUS status;
        bool lost;
    } cases[] = {
        {"good", 0, 0, 12, 0, 0, false},
        {"no header", 0, 0, 7, 0, 0xE100000A, false},
        {"newer id", 0, 1, 12, 0, 0xE100000B, false},
        {"older ids first", 0, 0, 12, 5, 0, false},
        {"device status", 0x8003, 0, 8, 0, 0xE1018003, false},
        {"informational status", 0x0089, 0, 12, 0, 0x61010089, false},
        {"access denied", 0x8006, 0, 8, 0, 0xE1018006, true},
    };
    for (const auto &row : cases) {
        ScriptedChannel channel([&row](const Bytes &request, std::size_t) {
            Answers answers;
            for (int before = row.older; before > 0; --before)
                answers.push_back(acknowledge(request, 0, 0x0081, {9, 9, 9, 9}, -before));
            answers.push_back(acknowledge(request, row.deviceStatus, 0x0081, {0, 0, 0x10, 0}, row.idOffset));
            answers.back().bytes.resize(row.size);
            return answers;
        });
        channel.setProperty(ControlChannel::MaxRetryCountRead, 0);
        channel.setProperty(ControlChannel::ReadRegTimeout, 3000);
        EXPECT_EQ(channel.read(), row.status) << row.what;
        EXPECT_EQ(channel.value, row.status == 0 ? 0x1000u : 0u) << row.what;
        EXPECT_EQ(channel.read(), row.lost ? 0xE1000016u : row.status) << row.what;
        EXPECT_TRUE(eventually([&] { return channel.lost == row.lost; })) << row.what;
    }
}

TEST(Transaction, OutdatedAcknowledgesDoNotHoldItForEver) {
    const struct {
        std::uint32_t timeout_ms, quiet_ms; // before them
        std::uint64_t elapsed_ms;
    } cases[] = {{100, 250, 250 + 5600}, {100, 0, 5600}, {10, 0, 1000}};
    for (const auto &row : cases) {
        ScriptedChannel channel([&row](const Bytes &request, std::size_t number) {
            Answers answers;
            for (std::uint32_t i = 0; i < 10000 && number == 0; i += 10)
                answers.emplace_back(acknowledge(request, 0, 0x0081, {9, 9, 9, 9}, -1), row.quiet_ms + i);
            return answers;
        });
        channel.setProperty(ControlChannel::MaxRetryCountRead, 5);
        channel.setProperty(ControlChannel::ReadRegTimeout, row.timeout_ms);
        const std::uint64_t start = channel.network.now_ms();
        EXPECT_EQ(channel.read(), 0xE101800Bu);
        EXPECT_EQ(channel.network.now_ms() - start, row.elapsed_ms);
    }
}

TEST(Transaction, WaitsForPendingAcknowledges) {
    struct Pending {
        std::uint32_t after_ms;
        std::uint16_t time_ms;
    };
    std::vector<Pending> longPending(5000, {10000, 100});
    longPending[0] = {0, 10000};
    const struct {
        const char *what;
        std::vector<Pending> pending;
        std::uint32_t answer_ms;
        std::size_t size; // of the message
        GXSTATUS status;
        std::size_t requests;
        std::uint64_t elapsed_ms;
    } cases[] = {
        {"one", {{100, 3000}}, 3050, 12, 0, 1, 3050},
        {"over, and asked again", {{100, 300}}, 500, 12, 0, 2, 500},
        {"more than ten seconds", {{0, 8000}, {7900, 8000}}, 20000, 12, 0xE101800B, 2, 10200},
        {"one after another", std::vector<Pending>(5000, {0, 0}), 20000, 12, 0xE101800B, 2, 200},
        {"for ever", longPending, 20000, 12, 0xE101800B, 2, 10000},
        {"cut", {{0, 3000}}, 3050, 11, 0xE100000B, 1, 0},
    };
    for (const auto &row : cases) {
        ScriptedChannel channel([&row](const Bytes &request, std::size_t number) {
            Answers answers;
            if (number > 0)
                return answers;
            for (const Pending &pending : row.pending) {
                const Bytes payload = {0, 0, static_cast<std::uint8_t>(pending.time_ms >> 8),
                                       static_cast<std::uint8_t>(pending.time_ms)};
                answers.emplace_back(acknowledge(request, 0, 0x0089, payload), pending.after_ms);
                answers.back().bytes.resize(row.size);
            }
            answers.emplace_back(acknowledge(request, 0, 0x0083, {0, 0, 0, 1}), row.answer_ms);
            return answers;
        });
        channel.setProperty(ControlChannel::MaxRetryCountWrite, 1);
        const std::uint64_t start = channel.network.now_ms();
        EXPECT_EQ(channel.write(), row.status) << row.what;
        EXPECT_EQ(channel.requests().size(), row.requests) << row.what;
        EXPECT_EQ(channel.network.now_ms() - start, row.elapsed_ms) << row.what;
    }
}

TEST(Transaction, RetriesWithTheSameIdAndCountsTimeouts) {
    for (const std::uint32_t retries : {2u, UINT32_MAX}) {
        ScriptedChannel channel(
            [](const Bytes &request, std::size_t number) { return number < 2 ? Answers{} : good(request); });
        channel.setProperty(ControlChannel::MaxRetryCountRead, retries);
        TraceLog traces;
        EXPECT_EQ(channel.read(), 0u) << retries;
        const std::vector<Bytes> requests = channel.requests();
        ASSERT_EQ(requests.size(), 3u);
        EXPECT_EQ(requests[0], requests[1]);
        EXPECT_EQ(requests[1], requests[2]);
        EXPECT_EQ(channel.property(ControlChannel::StatisticReadWriteTimeoutCount), 2u);
        EXPECT_TRUE(traces.contains("GxSocketRecv timed out. 2. retry.")) << traces.all();
    }
}

constexpr std::uint32_t Addresses[] = {0x1000, 0x1004};

/// A kind of transaction, on 8 bytes of data.
const struct Kind {
    const char *name;
    std::uint32_t timeout, retries; // property tags
    std::uint16_t acknowledge;
    std::size_t payload; // of the acknowledge
    std::function<GXSTATUS(ControlChannel &, std::uint32_t *)> access;
} Kinds[] = {
    {"READREG", ControlChannel::ReadRegTimeout, ControlChannel::MaxRetryCountRead, 0x0081, 8,
     [](ControlChannel &channel, std::uint32_t *data) { return channel.ReadReg(Addresses, data, 2); }},
    {"WRITEREG", ControlChannel::WriteRegTimeout, ControlChannel::MaxRetryCountWrite, 0x0083, 4,
     [](ControlChannel &channel, std::uint32_t *data) { return channel.WriteReg(Addresses, data, 2); }},
    {"READMEM", ControlChannel::ReadMemTimeout, ControlChannel::MaxRetryCountRead, 0x0085, 12,
     [](ControlChannel &channel, std::uint32_t *data) { return channel.ReadMem(0x1000, data, 8); }},
    {"WRITEMEM", ControlChannel::WriteMemTimeout, ControlChannel::MaxRetryCountWrite, 0x0087, 4,
     [](ControlChannel &channel, std::uint32_t *data) { return channel.WriteMem(0x1000, data, 8); }},
};

TEST(Transaction, EachKindHasItsTimeoutAndRetries) {
    for (const Kind &kind : Kinds) {
        ScriptedChannel channel([](const Bytes &, std::size_t) { return Answers{}; });
        EXPECT_EQ(channel.property(kind.timeout), 200u) << kind.name;
        EXPECT_EQ(channel.property(kind.retries), 2u) << kind.name;
        for (const Kind &other : Kinds) {
            channel.setProperty(other.timeout, 1);
            channel.setProperty(other.retries, 5);
        }
        channel.setProperty(kind.timeout, 250);
        channel.setProperty(kind.retries, 1);
        std::uint32_t data[2] = {};
        const std::uint64_t start = channel.network.now_ms();
        EXPECT_EQ(kind.access(*channel.operator->(), data), 0xE101800Bu) << kind.name;
        EXPECT_EQ(channel.network.now_ms() - start, 500u) << kind.name;
        EXPECT_EQ(channel.requests().size(), 2u) << kind.name;
    }
}

TEST(Transaction, EachKindChecksItsAcknowledge) {
    struct Fault {
        const char *what;
        std::uint16_t code; // exclusive or
        std::size_t missing, missingInLength;
        GXSTATUS readStatus, writeStatus;
    };
    for (const Kind &kind : Kinds) {
        for (const Fault &fault : {Fault{"good", 0, 0, 0, 0, 0}, Fault{"wrong code", 2, 0, 0, 0xE100000B, 0xE100000B},
                                   Fault{"cut", 0, 1, 0, 0xE100000C, 0}, Fault{"length", 0, 0, 1, 0xE100000C, 0}}) {
            ScriptedChannel channel([&](const Bytes &request, std::size_t) {
                const auto code = static_cast<std::uint16_t>(kind.acknowledge ^ fault.code);
                Bytes bytes = acknowledge(request, 0, code, Bytes(kind.payload - fault.missing, 0x55));
                bytes[5] = static_cast<std::uint8_t>(kind.payload - fault.missingInLength);
                return Answers{bytes};
            });
            const bool reads = kind.retries == ControlChannel::MaxRetryCountRead;
            std::uint32_t data[2] = {};
            const GXSTATUS expected = reads ? fault.readStatus : fault.writeStatus;
            EXPECT_EQ(kind.access(*channel.operator->(), data), expected) << kind.name << ": " << fault.what;
            EXPECT_EQ(data[1], reads && expected == 0 ? 0x55555555u : 0u) << kind.name << ": " << fault.what;
        }
    }
}

TEST(Transaction, IdsSkipZeroAndCompareAcrossTheWrap) {
    constexpr std::size_t Last = 65535 - 2; // the opening took ids 1 and 2
    ScriptedChannel channel([](const Bytes &request, std::size_t number) {
        // Around the wrap every request is preceded by an acknowledge of the one before.
        const bool nearWrap = number + 3 > Last;
        const int before = requestId(request) == 1 ? -2 : -1; // 1 follows 65535
        return nearWrap ? Answers{acknowledge(request, 0, 0x0081, {9, 9, 9, 9}, before), Device().answer(request)}
                        : good(request);
    });
    channel.setProperty(ControlChannel::ReadRegTimeout, 0); // what has come is looked at all the same
    TraceLog traces;
    for (std::size_t i = 0; i < Last + 2; ++i)
        ASSERT_EQ(channel.read(), 0u) << i;
    const std::vector<Bytes> requests = channel.requests();
    EXPECT_EQ(requestId(requests[Last - 1]), 65535);
    EXPECT_EQ(requestId(requests[Last]), 1);
    EXPECT_EQ(requestId(requests[Last + 1]), 2);
    EXPECT_TRUE(traces.contains("Outdated transaction id. Expected: 0x01 encountered: 0xffff.")) << traces.all();
}

TEST(Transaction, SplitsByCapability) {
    using Sizes = std::vector<std::size_t>; // payload bytes of each request
    const struct {
        std::uint32_t capabilities;
        Sizes readReg, writeReg, writeMem;
    } cases[] = {
        {GEV_CAPABILITY_CONCATENATION, {540, 540, 120}, {536, 64}, {536, 536, 536, 536, 56}},
        {GEV_CAPABILITY_WRITEMEM, Sizes(300, 4), Sizes(75, 8), {540, 540, 32}},
    };
    for (const auto &row : cases) {
        ScriptedChannel channel(good, Device{0, row.capabilities});
        std::size_t seen = 0;
        const auto newSizes = [&] {
            const std::vector<Bytes> requests = channel.requests();
            Sizes sizes;
            for (; seen < requests.size(); ++seen)
                sizes.push_back(requests[seen].size() - 8);
            return sizes;
        };
        std::vector<std::uint32_t> addresses(300);
        std::iota(addresses.begin(), addresses.end(), 0x2000);
        std::vector<std::uint32_t> values(300);
        EXPECT_EQ(channel->ReadReg(addresses.data(), values.data(), 300), 0u);
        EXPECT_EQ(values, addresses);
        EXPECT_EQ(newSizes(), row.readReg);
        EXPECT_EQ(channel->WriteReg(addresses.data(), values.data(), 75), 0u);
        EXPECT_EQ(newSizes(), row.writeReg);
        Bytes memory(1100);
        EXPECT_EQ(channel->WriteMem(0x9000, memory.data(), 1100), 0u);
        EXPECT_EQ(newSizes(), row.writeMem);
        EXPECT_EQ(channel->ReadMem(0x100, memory.data(), 1073), 0u); // in pieces of 536 in any case
        EXPECT_EQ(newSizes(), Sizes(3, 8));
        for (std::size_t i = 0; i < 1073; ++i)
            ASSERT_EQ(memory[i], static_cast<std::uint8_t>(i)) << i;
        const Bytes last = channel.requests().back();
        EXPECT_EQ(Bytes(last.begin(), last.begin() + 6), (Bytes{0x42, 0x01, 0x00, 0x84, 0x00, 0x08}));
        EXPECT_EQ(Bytes(last.begin() + 8, last.end()), (Bytes{0, 0, 0x05, 0x30, 0, 0, 0, 1})); // 0x100 + 1072
        EXPECT_EQ(channel->ReadMem(0, nullptr, 0), 0u);
        EXPECT_EQ(channel->ReadReg(nullptr, nullptr, 0), 0u);
        EXPECT_EQ(newSizes(), Sizes());
    }
}

TEST(Transaction, EmulatedMemoryWriteKeepsTheBytesOrder) {
    const struct {
        std::uint32_t mode;
        Bytes payload;
    } cases[] = {
        {0x80000000, {0, 0, 0xB0, 0, 1, 2, 3, 4, 0, 0, 0xB0, 4, 5, 6, 7, 8}},
        {0, {0, 0, 0xB0, 0, 4, 3, 2, 1, 0, 0, 0xB0, 4, 8, 7, 6, 5}},
    };
    for (const auto &row : cases) {
        ScriptedChannel channel(good, Device{row.mode, GEV_CAPABILITY_CONCATENATION});
        const std::uint8_t data[10] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
        EXPECT_EQ(channel->WriteMem(0xB000, data, sizeof data), 0u);
        // Two registers; the last two bytes are not written.
        ASSERT_EQ(channel.requests().size(), 1u);
        const Bytes request = channel.requests()[0];
        EXPECT_EQ(Bytes(request.begin() + 8, request.end()), row.payload);
    }
}

TEST(Transaction, DuplicatedCommandsGoOutTwiceWithOneId) {
    ScriptedChannel channel(
        [](const Bytes &request, std::size_t number) { return number < 2 ? Answers{} : good(request); });
    EXPECT_EQ(channel->EnableCommandDuplication(true), 0u);
    EXPECT_EQ(channel.read(), 0u); // first pair lost, re-sent as a pair
    EXPECT_EQ(channel.requests().size(), 4u);
    for (const Bytes &request : channel.requests())
        EXPECT_EQ(request, channel.requests()[0]);
    EXPECT_EQ(channel.read(), 0u); // the second answer to the pair is skipped as outdated
}

TEST(Transaction, FirstFailingPieceEndsTheOperation) {
    ScriptedChannel channel([](const Bytes &request, std::size_t number) {
        return number == 1 ? Answers{acknowledge(request, 0x8003, 0x0081, {})} : good(request);
    });
    TraceLog traces;
    std::vector<std::uint32_t> addresses(300, 0x1000);
    std::vector<std::uint32_t> values(300);
    EXPECT_EQ(channel->ReadReg(addresses.data(), values.data(), 300), 0xE1018003u);
    EXPECT_EQ(channel.requests().size(), 2u);
    EXPECT_TRUE(traces.contains("Failed to complete transaction to read 135 register(s). Status = 0xE1018003."));
    EXPECT_TRUE(traces.contains("Failed to complete control transaction. Status = 0xe1018003."));
    EXPECT_EQ(channel.read(), 0u);
}

TEST(Transaction, PropertiesCheckTheirArguments) {
    ScriptedChannel channel(good);
    std::uint64_t value = 0;
    std::size_t size = 0;
    EXPECT_EQ(channel->GetProperty(0, &value, 8, &size), 0u);
    EXPECT_EQ(size, 4u);
    const std::tuple<std::uint32_t, void *, std::size_t> wrong[] = {{0, &value, 3}, {7, &value, 4}, {0, nullptr, 4}};
    for (const auto &[tag, buffer, bytes] : wrong) {
        EXPECT_EQ(channel->GetProperty(tag, buffer, bytes, &size), 0xE1000006u);
        EXPECT_EQ(channel->SetProperty(tag, buffer, bytes), 0xE1000006u);
    }
}

} // namespace
