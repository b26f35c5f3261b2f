#include "gxapi/ControlChannel.h"
#include "support/Leaks.h"
#include "support/ScriptedPeer.h"
#include "support/TraceLog.h"

#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <numeric>

namespace {

using Answers = std::vector<Bytes>;

constexpr std::uint32_t Concatenation = 1;
constexpr std::uint32_t WriteMem = 2;

std::uint16_t command(const Bytes &request) { return static_cast<std::uint16_t>(request[2] << 8 | request[3]); }
std::uint16_t requestId(const Bytes &request) { return static_cast<std::uint16_t>(request[6] << 8 | request[7]); }
std::uint32_t word(const Bytes &bytes, std::size_t offset) {
    return static_cast<std::uint32_t>(bytes[offset] << 24 | bytes[offset + 1] << 16 | bytes[offset + 2] << 8 |
                                      bytes[offset + 3]);
}
void append(Bytes &bytes, std::uint32_t value) {
    for (const int shift : {24, 16, 8, 0})
        bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

/// What a device does that works: a register reads as its address, but for the two that an opening channel reads.
struct Device {
    std::uint32_t mode = 0x80000000;
    std::uint32_t capabilities = Concatenation | WriteMem;

    Bytes answer(const Bytes &request) const {
        Bytes payload;
        switch (command(request)) {
        case 0x0080:
            for (std::size_t offset = 8; offset < request.size(); offset += 4)
                append(payload, value(word(request, offset)));
            break;
        case 0x0084:
            append(payload, word(request, 8));
            for (std::uint32_t i = 0; i < (word(request, 12) & 0xFFFF); ++i)
                payload.push_back(static_cast<std::uint8_t>(word(request, 8) + i));
            break;
        default:
            append(payload, 0);
        }
        return acknowledge(request, 0, static_cast<std::uint16_t>(command(request) + 1), payload);
    }

private:
    std::uint32_t value(std::uint32_t address) const {
        return address == 0x0004 ? mode : address == 0x0934 ? capabilities : address;
    }
};

/// A channel without privilege to a scripted device. The script sees the requests that follow the opening.
class Channel : public Gx::ControlChannel::SurpriseRemovalCallback {
public:
    using Script = std::function<Answers(const Bytes &request, std::size_t number)>;

    explicit Channel(Script script, Device device = {})
        : m_Peer([script, device](const Bytes &request, std::size_t number) {
              return number < Opening ? Answers{device.answer(request)} : script(request, number - Opening);
          }) {
        const sockaddr_in address = m_Peer.address();
        EXPECT_EQ(Gx::ControlChannel::Create(reinterpret_cast<const sockaddr *>(&address), 0, 600000, &m_pChannel), 0u);
        EXPECT_EQ(m_pChannel->RegisterSurpriseRemovalCallback(this), 0u);
    }
    ~Channel() override { EXPECT_EQ(m_pChannel->Destroy(), 0u); }

    Gx::ControlChannel *operator->() { return m_pChannel; }
    void OnSurpriseRemoval() noexcept override { ++lost; }

    /// The requests after the opening.
    std::vector<Bytes> requests() const {
        std::vector<Bytes> all = m_Peer.requests();
        all.erase(all.begin(), all.begin() + Opening);
        return all;
    }
    GXSTATUS read(std::uint32_t address = 0x1000) {
        value = 0;
        return m_pChannel->ReadReg(&address, &value, 1);
    }
    void setProperty(std::uint32_t tag, std::uint32_t setting) {
        EXPECT_EQ(m_pChannel->SetProperty(tag, &setting, sizeof setting), 0u);
    }
    std::uint32_t property(std::uint32_t tag) {
        std::uint32_t setting = 0;
        EXPECT_EQ(m_pChannel->GetProperty(tag, &setting, sizeof setting, nullptr), 0u);
        return setting;
    }

    std::atomic<int> lost{0};
    std::uint32_t value = 0;

private:
    static constexpr std::size_t Opening = 2; // device mode and capability

    ScriptedPeer m_Peer;
    Gx::ControlChannel *m_pChannel = nullptr;
};

Answers good(const Bytes &request) { return {Device().answer(request)}; }

TEST(Transaction, AcknowledgeIsJudged) {
    const struct {
        const char *what;
        std::function<Answers(const Bytes &)> answer;
        GXSTATUS status;
        bool lost;
    } cases[] = {
        {"good", good, 0, false},
        {"no header", [](const Bytes &) { return Answers{Bytes(7, 0)}; }, 0xE100000A, false},
        {"empty datagram", [](const Bytes &) { return Answers{Bytes()}; }, 0xE100000A, false},
        {"wrong code",
         [](const Bytes &r) {
             return Answers{acknowledge(r, 0, 0x0083, {0, 0, 0, 0})};
         },
         0xE100000B, false},
        {"newer id",
         [](const Bytes &r) {
             return Answers{acknowledge(r, 0, 0x0081, {1, 2, 3, 4}, 1)};
         },
         0xE100000B, false},
        {"older id first",
         [](const Bytes &r) {
             return Answers{acknowledge(r, 0, 0x0081, {9, 9, 9, 9}, -1), Device().answer(r)};
         },
         0, false},
        {"three bytes of four",
         [](const Bytes &r) {
             return Answers{acknowledge(r, 0, 0x0081, {0, 0, 0x10})};
         },
         0xE100000C, false},
        {"length field too small",
         [](const Bytes &r) {
             Bytes bytes = Device().answer(r);
             bytes[5] = 3;
             return Answers{bytes};
         },
         0xE100000C, false},
        {"device status", [](const Bytes &r) { return Answers{acknowledge(r, 0x8003, 0x0081, {})}; }, 0xE1018003,
         false},
        {"informational status",
         [](const Bytes &r) {
             return Answers{acknowledge(r, 0x0089, 0x0081, {1, 2, 3, 4})};
         },
         0x61010089, false},
        {"access denied", [](const Bytes &r) { return Answers{acknowledge(r, 0x8006, 0x0081, {})}; }, 0xE1018006, true},
        {"silence", [](const Bytes &) { return Answers{}; }, 0xE101800B, true},
    };
    for (const auto &row : cases) {
        Channel channel([&row](const Bytes &request, std::size_t number) {
            return number < 3 ? row.answer(request) : good(request);
        });
        channel.setProperty(Gx::ControlChannel::ReadRegTimeout, 30);
        EXPECT_EQ(channel.read(), row.status) << row.what;
        EXPECT_EQ(channel.value, row.status == 0 ? 0x1000u : 0u) << row.what;
        EXPECT_EQ(channel.read(), row.lost ? 0xE1000016u : row.status) << row.what;
        EXPECT_TRUE(eventually([&] { return channel.lost == (row.lost ? 1 : 0); })) << row.what;
    }
}

TEST(Transaction, RetriesWithTheSameIdAndCountsTimeouts) {
    Channel channel([](const Bytes &request, std::size_t number) {
        return number < 2 ? Answers{} : Answers{Device().answer(request)};
    });
    TraceLog traces;
    EXPECT_EQ(channel.read(), 0u);
    const std::vector<Bytes> requests = channel.requests();
    ASSERT_EQ(requests.size(), 3u);
    EXPECT_EQ(requests[0], requests[1]);
    EXPECT_EQ(requests[1], requests[2]);
    EXPECT_EQ(channel.property(Gx::ControlChannel::StatisticReadWriteTimeoutCount), 2u);
    EXPECT_TRUE(traces.contains("GxSocketRecv timed out. 2. retry.")) << traces.all();
}

TEST(Transaction, OutdatedAcknowledgesAreNoAttempts) {
    // More of them than attempts are allowed.
    Channel channel([](const Bytes &request, std::size_t) {
        Answers answers;
        for (int i = 5; i > 0; --i)
            answers.push_back(acknowledge(request, 0, 0x0081, {9, 9, 9, 9}, -i));
        answers.push_back(Device().answer(request));
        return answers;
    });
    channel.setProperty(Gx::ControlChannel::MaxRetryCountRead, 0);
    TraceLog traces;
    EXPECT_EQ(channel.read(), 0u);
    EXPECT_EQ(channel.value, 0x1000u);
    EXPECT_EQ(channel.requests().size(), 1u);
    EXPECT_TRUE(traces.contains("Outdated transaction id. Expected: 0x03 encountered: 0x02.")) << traces.all();
}

TEST(Transaction, IdsSkipZeroAndCompareAcrossTheWrap) {
    constexpr std::size_t Last = 65535 - 2; // the opening took ids 1 and 2
    Channel channel([](const Bytes &request, std::size_t number) {
        // Around the wrap every request is preceded by an acknowledge of the one before.
        const bool nearWrap = number + 3 > Last;
        const int before = requestId(request) == 1 ? -2 : -1; // 1 follows 65535
        return nearWrap ? Answers{acknowledge(request, 0, 0x0081, {9, 9, 9, 9}, before), Device().answer(request)}
                        : good(request);
    });
    for (std::size_t i = 0; i < Last + 2; ++i)
        ASSERT_EQ(channel.read(), 0u) << i;
    const std::vector<Bytes> requests = channel.requests();
    EXPECT_EQ(requestId(requests[Last - 1]), 65535);
    EXPECT_EQ(requestId(requests[Last]), 1);
    EXPECT_EQ(requestId(requests[Last + 1]), 2);
}

TEST(Transaction, SplitsByCapability) {
    const struct {
        std::uint32_t capabilities;
        std::vector<std::size_t> readReg, writeReg, writeMem; // payload bytes of each request
    } cases[] = {
        {Concatenation | WriteMem, {540, 540, 120}, {536, 64}, {540, 540, 32}},
        {Concatenation, {540, 540, 120}, {536, 64}, {536, 536, 536, 536, 56}},
    };
    for (const auto &row : cases) {
        Device device;
        device.capabilities = row.capabilities;
        Channel channel([device](const Bytes &request, std::size_t) { return Answers{device.answer(request)}; },
                        device);
        std::vector<std::uint32_t> addresses(300);
        std::iota(addresses.begin(), addresses.end(), 0x2000);
        std::vector<std::uint32_t> values(300);
        EXPECT_EQ(channel->ReadReg(addresses.data(), values.data(), 300), 0u);
        EXPECT_EQ(values, addresses);
        EXPECT_EQ(channel->WriteReg(addresses.data(), values.data(), 75), 0u);
        std::vector<std::uint8_t> memory(1100);
        EXPECT_EQ(channel->WriteMem(0x9000, memory.data(), 1100), 0u);

        std::vector<std::size_t> expected = row.readReg;
        expected.insert(expected.end(), row.writeReg.begin(), row.writeReg.end());
        expected.insert(expected.end(), row.writeMem.begin(), row.writeMem.end());
        std::vector<std::size_t> sizes;
        for (const Bytes &request : channel.requests())
            sizes.push_back(request.size() - 8);
        EXPECT_EQ(sizes, expected);
    }
}

TEST(Transaction, WithoutConcatenationEveryRegisterIsATransaction) {
    Device plain;
    plain.capabilities = 0;
    Channel channel([plain](const Bytes &request, std::size_t) { return Answers{plain.answer(request)}; }, plain);
    const std::uint32_t addresses[] = {0x10, 0x20, 0x30};
    std::uint32_t values[3] = {};
    EXPECT_EQ(channel->ReadReg(addresses, values, 3), 0u);
    EXPECT_EQ(channel->WriteReg(addresses, values, 3), 0u);
    for (const Bytes &request : channel.requests())
        EXPECT_EQ(request.size(), command(request) == 0x0080 ? 12u : 16u);
    EXPECT_EQ(channel.requests().size(), 6u);
}

TEST(Transaction, ReadMemIsReadInPieces) {
    Channel channel([](const Bytes &request, std::size_t) { return good(request); });
    std::vector<std::uint8_t> bytes(1073);
    EXPECT_EQ(channel->ReadMem(0x100, bytes.data(), 1073), 0u);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        ASSERT_EQ(bytes[i], static_cast<std::uint8_t>(i)) << i;
    const std::vector<Bytes> requests = channel.requests();
    ASSERT_EQ(requests.size(), 3u);
    EXPECT_EQ(requests[2], (Bytes{0x42, 0x01, 0x00, 0x84, 0x00, 0x08, 0x00, 0x05, // id 5
                                  0x00, 0x00, 0x05, 0x30,                         // 0x100 + 1072
                                  0x00, 0x00, 0x00, 0x01}));
    EXPECT_EQ(channel->ReadMem(0, nullptr, 0), 0u);
    EXPECT_EQ(channel->ReadReg(nullptr, nullptr, 0), 0u);
    EXPECT_EQ(channel.requests().size(), 3u);
}

TEST(Transaction, MemoryAcknowledgeIsChecked) {
    const struct {
        const char *what;
        std::size_t dataBytes;
        std::uint8_t lengthField;
        std::uint16_t code;
        GXSTATUS status;
    } cases[] = {
        {"good", 8, 12, 0x0085, 0},
        {"cut", 7, 12, 0x0085, 0xE100000C},
        {"length field", 8, 11, 0x0085, 0xE100000C},
        {"wrong code", 8, 12, 0x0087, 0xE100000B},
    };
    for (const auto &row : cases) {
        Channel channel([&row](const Bytes &request, std::size_t) {
            Bytes bytes = acknowledge(request, 0, row.code, Bytes(4 + row.dataBytes, 0x55));
            bytes[5] = row.lengthField;
            return Answers{bytes};
        });
        std::uint8_t data[8] = {};
        EXPECT_EQ(channel->ReadMem(0x100, data, 8), row.status) << row.what;
        EXPECT_EQ(data[7], row.status == 0 ? 0x55 : 0) << row.what;
        EXPECT_EQ(channel.lost, 0) << row.what;
    }
}

TEST(Transaction, EmulatedMemoryWriteKeepsTheBytesOrder) {
    const struct {
        std::uint32_t mode;
        Bytes firstValue; // as on the wire
    } cases[] = {{0x80000000, {1, 2, 3, 4}}, {0, {4, 3, 2, 1}}};
    for (const auto &row : cases) {
        Device device;
        device.mode = row.mode;
        device.capabilities = Concatenation;
        Channel channel([device](const Bytes &request, std::size_t) { return Answers{device.answer(request)}; },
                        device);
        const std::uint8_t data[10] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
        EXPECT_EQ(channel->WriteMem(0xB000, data, sizeof data), 0u);
        ASSERT_EQ(channel.requests().size(), 1u);
        const Bytes request = channel.requests()[0];
        ASSERT_EQ(request.size(), 8u + 2 * 8); // two registers, the last two bytes are not written
        EXPECT_EQ(word(request, 8), 0xB000u);
        EXPECT_EQ(Bytes(request.begin() + 12, request.begin() + 16), row.firstValue);
        EXPECT_EQ(word(request, 16), 0xB004u);
    }
}

TEST(Transaction, DuplicatedCommandsGoOutTwiceWithOneId) {
    std::atomic<int> seen{0};
    Channel channel([&seen](const Bytes &request, std::size_t) {
        return ++seen <= 2 ? Answers{} : Answers{Device().answer(request)};
    });
    EXPECT_EQ(channel->EnableCommandDuplication(true), 0u);
    EXPECT_EQ(channel.read(), 0u); // first pair lost, re-sent as a pair
    EXPECT_TRUE(eventually([&] { return channel.requests().size() == 4; }));
    for (const Bytes &request : channel.requests())
        EXPECT_EQ(request, channel.requests()[0]);
    EXPECT_EQ(channel.read(), 0u); // the second answer to the pair is skipped as outdated
}

TEST(Transaction, FirstFailingPieceEndsTheOperation) {
    Channel channel([](const Bytes &request, std::size_t number) {
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
    Channel channel([](const Bytes &request, std::size_t) { return good(request); });
    const std::uint32_t defaults[] = {200, 200, 200, 200, 2, 2, 0};
    for (std::uint32_t tag = 0; tag < 7; ++tag)
        EXPECT_EQ(channel.property(tag), defaults[tag]) << tag;
    std::uint64_t value = 0;
    std::size_t size = 0;
    EXPECT_EQ(channel->GetProperty(0, &value, 8, &size), 0u);
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(channel->GetProperty(0, &value, 3, &size), 0xE1000006u);
    EXPECT_EQ(channel->GetProperty(7, &value, 4, &size), 0xE1000006u);
    EXPECT_EQ(channel->GetProperty(0, nullptr, 4, &size), 0xE1000006u);
    EXPECT_EQ(channel->SetProperty(0, &value, 8), 0xE1000006u);
    EXPECT_EQ(channel->SetProperty(7, &value, 4), 0xE1000006u);
    EXPECT_EQ(channel->SetProperty(0, nullptr, 4), 0xE1000006u);
}

} // namespace
