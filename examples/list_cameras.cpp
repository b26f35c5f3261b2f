// Lists every GigE Vision camera that answers a discovery with broadcast acknowledge.

#include "gxapi/Enumerator.h"
#include "gxapi/Gx.h"

#include <arpa/inet.h>
#include <cstdio>
#include <cstring>
#include <netinet/in.h>
#include <string>

namespace {

std::string quad(in_addr_t networkOrder) {
    char text[INET_ADDRSTRLEN] = "";
    const in_addr address{networkOrder};
    inet_ntop(AF_INET, &address, text, sizeof text);
    return text;
}

std::string quad(const sockaddr *address) {
    return quad(reinterpret_cast<const sockaddr_in *>(address)->sin_addr.s_addr);
}

std::string quad(const GEV_IP_ADDRESS &hostOrder) { return quad(htonl(hostOrder.IPv4.Address)); }

template <std::size_t Size> std::string text(const char (&field)[Size]) { return {field, strnlen(field, Size)}; }

class Printer : public Gx::Enumerator::Callee {
public:
    GXSTATUS EnumCallback(const sockaddr *, const GEV_DISCOVERY_INFO *info, const sockaddr *adapter) noexcept override {
        const GV_DEVICE_DESCRIPTION &device = info->Description;
        std::printf("%-16s %-20s %-10s %04X%08X %-16s %-16s\n", quad(adapter).c_str(), text(device.ModelName).c_str(),
                    text(device.SerialNumber).c_str(), info->DeviceMacAddress.High & 0xFFFF, info->DeviceMacAddress.Low,
                    quad(info->CurrentIP).c_str(), quad(info->CurrentSubnetMask).c_str());
        return GX_SUCCESS;
    }
};

} // namespace

int main() {
    constexpr std::uint32_t Timeout_ms = 250;
    GXSTATUS status = Gx::Init();
    std::printf("%-16s %-20s %-10s %-12s %-16s %-16s\n", "adapter", "model", "serial", "MAC", "IP address", "mask");
    Printer printer;
    if (status == GX_SUCCESS)
        status = Gx::Enumerator::Discover(&printer, Timeout_ms, Gx::Enumerator::FlagBroadcastAcknowledge, nullptr);
    if (status == GX_SUCCESS)
        return 0;
    char message[2048] = "no text";
    (void)Gx::GetStatusMessage(status, message, sizeof message, nullptr);
    std::fprintf(stderr, "discovery failed: %s (0x%08X)\n", message, status);
    return 1;
}
