// A device that answers the control channel as the input says. The first byte chooses the access and whether the
// opening is answered by the input too, the second what the device can do, the third how much is accessed. Records
// follow: a byte of EAnswer bits, a length, that many bytes of a datagram.
// fuzz_control_acks -max_len=4096 -timeout=5 CORPUS seeds/fuzz_control_acks

#include "FuzzInput.h"
#include "support/ScriptedNetwork.h"

#include "gxapi/ControlChannel.h"

#include <arpa/inet.h>
#include <cerrno>

namespace {

enum EAnswer : unsigned {
    RightId = 1,
    RightCode = 2, ///< and no failure
    RightLength = 4,
    FullSize = 8, ///< cut or filled up to what the request asks for
    LastForNow = 16,
    SocketError = 32,
    SendError = 64
};

constexpr std::uint32_t Base = 0x1000;
constexpr std::uint8_t Untouched = 0xA5;
constexpr std::size_t HeaderSize = sizeof(GVCP_RESPONSE_HEADER);

std::size_t PayloadSize(const Bytes &request) {
    switch (Half(request, 2)) {
    case TAG_READREG_CMD:
        return request.size() - HeaderSize;
    case TAG_READMEM_CMD:
        return std::size_t{4} + Half(request, 14);
    default:
        return 4;
    }
}

class ScriptedDevice {
public:
    ScriptedDevice(FuzzInput &input, bool opensWell, std::uint32_t capabilities)
        : m_Input(input), m_OpensWell(opensWell), m_Capabilities(capabilities) {}

    void EndOpening() {
        m_OpensWell = false;
        m_IsOpen = true;
    }

    Bytes lastSent;
    std::size_t sendCount = 0;
    ScriptedNetwork network{[this](const Bytes &request) {
        CheckRequest(request);
        if (Half(request, 2) == TAG_WRITEREG_CMD && Word(request, 8) == GEV_REG_CONTROL_CHANNEL_PRIVILEGE && m_IsOpen)
            return 0; // given back after a loss, perhaps by another thread
        lastSent = request;
        ++sendCount;
        if (!m_OpensWell)
            return Answer(request);
        Bytes answer(HeaderSize + PayloadSize(request), 0);
        const bool askedForCapabilities =
            Half(request, 2) == TAG_READREG_CMD && Word(request, 8) != GEV_REG_DEVICE_MODE;
        answer.back() = static_cast<std::uint8_t>(askedForCapabilities ? m_Capabilities : 0);
        answer[HeaderSize] = static_cast<std::uint8_t>(m_Capabilities); // with the bit of a big-endian device
        Queue(request, std::move(answer), RightId | RightCode | RightLength);
        return 0;
    }};

private:
    static void CheckRequest(const Bytes &request) {
        Require(request.size() >= HeaderSize && request.size() <= HeaderSize + GVCP_MAX_PAYLOAD, "size of a request");
        Require(request[0] == GVCP_KEY && Half(request, 4) == request.size() - HeaderSize, "header of a request");
    }

    int Answer(const Bytes &request) {
        unsigned answer = 0;
        while (!m_Input.IsEmpty() && (answer & LastForNow) == 0) {
            answer = m_Input.Byte();
            if ((answer & SendError) != 0)
                return ENETUNREACH;
            Queue(request, m_Input.Take(m_Input.Byte()), answer);
        }
        return 0;
    }

    void Queue(const Bytes &request, Bytes bytes, unsigned answer) {
        if ((answer & FullSize) != 0)
            bytes.resize(HeaderSize + PayloadSize(request));
        if (bytes.size() >= HeaderSize) {
            if ((answer & RightId) != 0)
                PutHalf(bytes, 6, Half(request, 6));
            if ((answer & RightCode) != 0) {
                PutHalf(bytes, 0, 0);
                PutHalf(bytes, 2, Half(request, 2) + 1u);
            }
            if ((answer & RightLength) != 0)
                PutHalf(bytes, 4, bytes.size() - HeaderSize);
        }
        network.answer(std::move(bytes), 0, (answer & SocketError) != 0 ? ECONNREFUSED : 0);
    }

    FuzzInput &m_Input;
    bool m_OpensWell;
    bool m_IsOpen = false;
    std::uint32_t m_Capabilities;
};

/// What "success" must mean, for the last transaction of an access.
void CheckAccepted(const ScriptedDevice &device) {
    const Bytes &request = device.lastSent;
    const Bytes answer = device.network.lastReceived();
    Require(answer.size() >= HeaderSize, "accepted without a header");
    Require(Half(answer, 0) == 0, "accepted a failure");
    Require(Half(answer, 2) == Half(request, 2) + 1, "accepted another command's answer");
    Require(Half(answer, 6) == Half(request, 6), "accepted another request's answer");
    if (Half(request, 2) != TAG_READREG_CMD && Half(request, 2) != TAG_READMEM_CMD)
        return;
    Require(answer.size() >= HeaderSize + PayloadSize(request), "accepted too little");
    Require(Half(answer, 4) == PayloadSize(request), "accepted a wrong length");
}

/// Data read are those of the answer, and what was not read is as it was.
void CheckRead(const ScriptedDevice &device, GXSTATUS status, const Bytes &data) {
    const std::size_t done = Word(device.lastSent, 8) - Base;
    const Bytes received = device.network.lastReceived();
    Require(done < data.size(), "asked for something else");
    if (status != GX_SUCCESS) {
        Require(std::all_of(data.begin() + static_cast<std::ptrdiff_t>(done), data.end(),
                            [](std::uint8_t byte) { return byte == Untouched; }),
                "a failed read left something");
        return;
    }
    const std::size_t size = data.size() - done;
    Require(std::equal(data.end() - static_cast<std::ptrdiff_t>(size), data.end(),
                       received.end() - static_cast<std::ptrdiff_t>(received.size() - HeaderSize -
                                                                    (PayloadSize(device.lastSent) - size))),
            "read something else");
}

GXSTATUS Access(Gx::ControlChannel &channel, unsigned kind, std::size_t count, Bytes &data) {
    std::vector<std::uint32_t> addresses(count);
    std::vector<std::uint32_t> values(count, 0xA5A5A5A5);
    for (std::size_t i = 0; i < count; ++i)
        addresses[i] = Base + 4 * static_cast<std::uint32_t>(i);
    const auto number = static_cast<std::uint32_t>(count);
    GXSTATUS status = GX_SUCCESS;
    switch (kind) {
    case 0:
        status = channel.ReadReg(addresses.data(), values.data(), number);
        for (std::size_t i = 0; i < count; ++i) {
            PutHalf(data, 4 * i, values[i] >> 16);
            PutHalf(data, 4 * i + 2, values[i]);
        }
        return status;
    case 1:
        return channel.ReadMem(Base, data.data(), static_cast<std::uint32_t>(data.size()));
    case 2:
        return channel.WriteReg(addresses.data(), values.data(), number);
    default:
        return channel.WriteMem(Base, data.data(), static_cast<std::uint32_t>(data.size()));
    }
}

void Use(Gx::ControlChannel &channel, ScriptedDevice &device, unsigned kind, std::size_t count) {
    const bool isRead = kind < 2;
    Bytes data(4 * count, Untouched);
    device.sendCount = 0;
    device.network.clearQueue();
    const GXSTATUS status = Access(channel, kind, count, data);
    Require(device.sendCount > 0 || status == GX_E_DISCONNECTED, "answered without asking");
    if (device.sendCount == 0)
        return;
    if (status == GX_SUCCESS)
        CheckAccepted(device);
    if (isRead)
        CheckRead(device, status, data);
    if (status == GX_E_GEV_ACCESS_DENIED) {
        Bytes more(4);
        Require(Access(channel, 1, 1, more) == GX_E_DISCONNECTED, "in use without access");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    FuzzInput input(bytes, size);
    const unsigned choice = input.Byte();
    const unsigned capabilities = input.Byte();
    const std::size_t count = std::size_t{1} + input.Byte();
    ScriptedDevice device(input, (choice & 0x80) == 0, capabilities);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    Gx::ControlChannel *channel = nullptr;
    const GXSTATUS status =
        Gx::ControlChannel::Create(reinterpret_cast<const sockaddr *>(&address), choice >> 3 & 3, UINT32_MAX, &channel);
    Require((status == GX_SUCCESS) == (channel != nullptr), "a channel exactly after success");
    Require(channel != nullptr || (choice & 0x80) != 0, "an opening that is answered well");
    if (!channel)
        return 0;
    device.EndOpening();
    (void)channel->EnableCommandDuplication((choice & 0x20) != 0);
    for (unsigned kind = 0; kind < 4; ++kind)
        if ((choice & 4) != 0 || (choice & 3) == kind)
            Use(*channel, device, kind, count);
    Require(channel->Destroy() == GX_SUCCESS, "destruction");
    return 0;
}
