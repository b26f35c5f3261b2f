#pragma once

#include "gxapi/ControlChannel.h"
#include "support/ScriptedNetwork.h"
#include "support/ScriptedPeer.h"
#include "support/SocketAddress.h"

#include <atomic>
#include <cstdint>
#include <gtest/gtest.h>

/// What a device answers to a request, and when on the scripted clock.
struct Answer {
    Answer(Bytes given, std::uint32_t delay_ms = 0) : bytes(std::move(given)), after_ms(delay_ms) {}
    Bytes bytes;
    std::uint32_t after_ms;
};
using Answers = std::vector<Answer>;

inline std::uint16_t command(const Bytes &request) { return static_cast<std::uint16_t>(request[2] << 8 | request[3]); }
inline std::uint32_t word(const Bytes &bytes, std::size_t offset) {
    return static_cast<std::uint32_t>(bytes[offset] << 24 | bytes[offset + 1] << 16 | bytes[offset + 2] << 8 |
                                      bytes[offset + 3]);
}

/// What a device does that works: a register reads as its address, but for the two that an opening channel reads.
struct Device {
    std::uint32_t mode = GEV_DEVICE_MODE_BIG_ENDIAN;
    std::uint32_t capabilities = GEV_CAPABILITY_CONCATENATION | GEV_CAPABILITY_WRITEMEM;

    Bytes answer(const Bytes &request) const {
        Bytes payload;
        switch (command(request)) {
        case TAG_READREG_CMD:
            for (std::size_t offset = 8; offset < request.size(); offset += 4)
                append(payload, value(word(request, offset)));
            break;
        case TAG_READMEM_CMD:
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
    static void append(Bytes &bytes, std::uint32_t value) {
        for (const int shift : {24, 16, 8, 0})
            bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    }
    std::uint32_t value(std::uint32_t address) const {
        return address == GEV_REG_DEVICE_MODE ? mode : address == GEV_REG_GVCP_CAPABILITY ? capabilities : address;
    }
};

inline Answers good(const Bytes &request, std::size_t = 0) { return {Device().answer(request)}; }

inline bool isRelease(const Bytes &request) {
    return command(request) == TAG_WRITEREG_CMD && word(request, 8) == GEV_REG_CONTROL_CHANNEL_PRIVILEGE &&
           word(request, 12) == 0;
}

/// A channel to a scripted device. The script sees the requests that follow the opening, numbered from 0.
class ScriptedChannel : public Gx::ControlChannel::SurpriseRemovalCallback {
public:
    using Script = std::function<Answers(const Bytes &request, std::size_t number)>;

    explicit ScriptedChannel(Script script, Device device = {}, std::uint32_t accessFlags = 0,
                             std::uint32_t heartbeat_ms = 600000)
        : m_Script(std::move(script)), m_Device(device) {
        EXPECT_EQ(Gx::ControlChannel::Create(SocketAddress("127.0.0.1"), accessFlags, heartbeat_ms, &m_pChannel), 0u);
        EXPECT_EQ(m_pChannel->RegisterSurpriseRemovalCallback(this), 0u);
        m_IsOpen = true;
    }
    ~ScriptedChannel() override { destroy(); }

    void destroy() {
        if (m_pChannel) {
            EXPECT_EQ(m_pChannel->RegisterSurpriseRemovalCallback(nullptr), 0u); // a notification may be on its way
            EXPECT_EQ(m_pChannel->Destroy(), 0u);
        }
        m_pChannel = nullptr;
    }

    /// With the notification of a loss on its way, if need be.
    void destroyRegistered() { EXPECT_EQ(std::exchange(m_pChannel, nullptr)->Destroy(), 0u); }

    Gx::ControlChannel *operator->() { return m_pChannel; }
    void OnSurpriseRemoval() noexcept override {
        if (onLost)
            onLost();
        ++lost;
    }

    /// The requests after the opening, and when they were sent.
    std::vector<Bytes> requests() const {
        const std::lock_guard lock(m_Mutex);
        return m_Requests;
    }
    std::vector<std::uint64_t> times_ms() const {
        const std::lock_guard lock(m_Mutex);
        return m_Times_ms;
    }
    GXSTATUS read(std::uint32_t address = 0x1000) {
        value = 0;
        return m_pChannel->ReadReg(&address, &value, 1);
    }
    GXSTATUS write() {
        const std::uint32_t address = 0x1000;
        const std::uint32_t number = 1;
        return m_pChannel->WriteReg(&address, &number, 1);
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
    std::atomic<int> sendError{0}; ///< errno of further sends
    std::function<void()> onLost;
    std::uint32_t value = 0;

private:
    int onSend(const Bytes &request) {
        if (sendError != 0)
            return sendError;
        Answers answers = {m_Device.answer(request)};
        if (m_IsOpen) {
            const std::lock_guard lock(m_Mutex);
            m_Requests.push_back(request);
            m_Times_ms.push_back(network.now_ms());
            answers = m_Script(request, m_Requests.size() - 1);
        }
        for (Answer &answer : answers)
            network.answer(std::move(answer.bytes), answer.after_ms);
        return 0;
    }

    Script m_Script;
    Device m_Device;
    std::atomic<bool> m_IsOpen{false};
    mutable std::mutex m_Mutex;
    std::vector<Bytes> m_Requests;
    std::vector<std::uint64_t> m_Times_ms;
    Gx::ControlChannel *m_pChannel = nullptr;

public:
    ScriptedNetwork network{[this](const Bytes &request) { return onSend(request); }}; ///< gone before the above
};
