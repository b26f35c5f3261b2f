#include "Frame.h"

#include "gxapi/GvcpMessages.h"

#include <netinet/in.h>

static_assert(listener::InfoSize == sizeof(GEV_DISCOVERY_INFO));

namespace listener {

namespace {

std::uint32_t number(const std::uint8_t *data, std::size_t size) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < size; ++i)
        value = value << 8 | data[i];
    return value;
}

} // namespace

std::optional<Acknowledge> readFrame(const std::uint8_t *data, std::size_t size) {
    constexpr std::size_t MinHeader = 20;
    constexpr std::size_t UdpHeader = 8;
    if (size < MinHeader || data[0] >> 4 != 4 || data[9] != IPPROTO_UDP)
        return {};
    const std::size_t header = std::size_t{data[0] & 0xFU} * 4;
    const std::size_t total = number(data + 2, 2);
    const bool isFragment = (number(data + 6, 2) & 0x3FFF) != 0;
    if (header < MinHeader || total > size || total < header + UdpHeader + sizeof(GVCP_DISCOVERY_RESPONSE) ||
        isFragment)
        return {};
    const std::uint8_t *udp = data + header;
    const std::uint8_t *response = udp + UdpHeader;
    const bool isAnswer =
        number(udp, 2) == GVCP_PORT && number(udp + 4, 2) >= UdpHeader + sizeof(GVCP_DISCOVERY_RESPONSE);
    const bool isSuccess = number(response + offsetof(GVCP_RESPONSE_HEADER, Status), 2) == 0 &&
                           number(response + offsetof(GVCP_RESPONSE_HEADER, Acknowledge), 2) == TAG_DISCOVERY_ACK &&
                           number(response + offsetof(GVCP_RESPONSE_HEADER, Length), 2) >= InfoSize;
    if (!isAnswer || !isSuccess)
        return {};
    return Acknowledge{number(data + 12, 4), response + sizeof(GVCP_RESPONSE_HEADER)};
}

std::string acknowledgeLine(const std::string &adapter, std::int64_t time_us, const Acknowledge &acknowledge) {
    std::string line = "ack " + adapter + " " + std::to_string(time_us) + " ";
    for (unsigned shift = 32; shift > 0; shift -= 8)
        line += std::to_string(acknowledge.sender >> (shift - 8) & 0xFF) + (shift > 8 ? "." : " ");
    for (std::size_t i = 0; i < InfoSize; ++i) {
        line += "0123456789abcdef"[acknowledge.info[i] >> 4];
        line += "0123456789abcdef"[acknowledge.info[i] & 0xF];
    }
    return line + "\n";
}

} // namespace listener
