#pragma once

#include "gxapi/ControlChannel.h"
#include "support/ScriptedPeer.h"

#include <atomic>
#include <cstdint>
#include <gtest/gtest.h>

using Answers = std::vector<Bytes>;

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

inline Answers good(const Bytes &request) { return {Device().answer(request)}; }

/// A channel to a scripted device. The script sees the requests that follow the opening, numbered from 0.
class ScriptedChannel : public Gx::ControlChannel::SurpriseRemovalCallback {
public:
    using Script = ScriptedPeer::Script;

    explicit ScriptedChannel(Script script, Device device = {}, std::uint32_t accessFlags = 0,
                             std::uint32_t heartbeat_ms = 600000)
        : m_Peer([this, script, device](const Bytes &request, std::size_t number) {
              return number < m_Opening ? Answers{device.answer(request)} : script(request, number - m_Opening);
          }) {
        const sockaddr_in address = m_Peer.address();
        EXPECT_EQ(Gx::ControlChannel::Create(reinterpret_cast<const sockaddr *>(&address), accessFlags, heartbeat_ms,
                                             &m_pChannel),
                  0u);
        EXPECT_EQ(m_pChannel->RegisterSurpriseRemovalCallback(this), 0u);
        m_Opening = m_Peer.requests().size();
    }
    ~ScriptedChannel() override { destroy(); }

    void destroy() {
        if (m_pChannel) {
            EXPECT_EQ(m_pChannel->Destroy(), 0u);
        }
        m_pChannel = nullptr;
    }

    Gx::ControlChannel *operator->() { return m_pChannel; }
    void OnSurpriseRemoval() noexcept override { ++lost; }

    /// The requests after the opening.
    std::vector<Bytes> requests() const {
        std::vector<Bytes> all = m_Peer.requests();
        all.erase(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(m_Opening));
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
    std::atomic<std::size_t> m_Opening{SIZE_MAX};
    ScriptedPeer m_Peer;
    Gx::ControlChannel *m_pChannel = nullptr;
};
