#include "MinimalCorvoGigETL/tools.h"

#include "Base/GCException.h"
#include "MinimalCorvo/CorvoBase.h"
#include "MinimalCorvo/Utilities.h"
#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"

#include <arpa/inet.h>
#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>

namespace Corvo {

namespace {

static_assert(sizeof(sockaddr) == sizeof(sockaddr_in), "the copies below convert between the two");

CTlInfo MakeGigETlInfo() {
    CTlInfo info;
    info.SetDeviceClass(GIGE_DEVICE_CLASS);
    info.SetFullName(String_t("GigE/") + GIGE_DEVICE_CLASS + " " + GetCorvoVersionString());
    info.SetVendorName("Quorel");
    info.SetFriendlyName("GigE");
    return info;
}

} // namespace

sockaddr AsSockaddr(const sockaddr_in &address) {
    sockaddr result{};
    std::memcpy(&result, &address, sizeof result);
    return result;
}

sockaddr_in AsSockaddrIn(const sockaddr &address) {
    sockaddr_in result{};
    std::memcpy(&result, &address, sizeof result);
    return result;
}

String_t atos(const sockaddr &address) {
    if (address.sa_family != AF_INET)
        throw RUNTIME_EXCEPTION("Protocoll not supported!");
    char text[40];
    const int length =
        std::snprintf(text, sizeof text, "%s:%d", ntoa(address).c_str(), ntohs(AsSockaddrIn(address).sin_port));
    if (length < 0 || static_cast<std::size_t>(length) >= sizeof text)
        throw OUT_OF_RANGE_EXCEPTION("local buffer too small");
    return text;
}

void stoa(const char *text, sockaddr &address) {
    char host[64] = "";
    std::uint16_t port = 0;
    if (text != nullptr) {
        std::sscanf(text, "%63[^:]", host);
        std::sscanf(text, "%*[^:]:%hu", &port);
    }
    sockaddr_in ipv4{};
    ipv4.sin_family = AF_INET;
    ipv4.sin_addr.s_addr = inet_addr(host); // all ones for a text that is no address
    ipv4.sin_port = htons(port);
    address = AsSockaddr(ipv4);
}

String_t ntoa(const GEV_IP_ADDRESS &address) { return DottedQuad(address.IPv4.Address); }

String_t ntoa(const sockaddr &address) { return DottedQuad(ntohl(AsSockaddrIn(address).sin_addr.s_addr)); }

std::string copyWithMaxLen(const char *field, std::size_t maxLength) {
    return field != nullptr ? std::string(field, strnlen(field, maxLength)) : std::string();
}

void NtohlBlockInPlace(void *block, std::size_t size) {
    std::uint32_t word = 0;
    assert(size % sizeof word == 0);
    auto *bytes = static_cast<unsigned char *>(block);
    for (std::size_t offset = 0; offset < size; offset += sizeof word) {
        std::memcpy(&word, bytes + offset, sizeof word);
        word = ntohl(word);
        std::memcpy(bytes + offset, &word, sizeof word);
    }
}

sockaddr Address(const CQuorelGigEDeviceInfo &info) {
    sockaddr address{};
    if (info.IsAddressAvailable()) {
        stoa(info.GetAddress(), address);
        return address;
    }
    assert(info.IsIpAddressAvailable() && info.IsPortNrAvailable());
    stoa(info.GetIpAddress() + ":" + info.GetPortNr(), address);
    return address;
}

sockaddr_in Address_in(const CQuorelGigEDeviceInfo &info) {
    const sockaddr_in address = AsSockaddrIn(Address(info));
    assert(address.sin_family == AF_INET);
    return address;
}

sockaddr Interface(const CQuorelGigEDeviceInfo &info) {
    sockaddr address{};
    stoa(info.GetInterface(), address);
    return address;
}

sockaddr_in Interface_in(const CQuorelGigEDeviceInfo &info) { return AsSockaddrIn(Interface(info)); }

bool IsLocalUrl(const String_t &url) {
    constexpr char LOCAL[] = "local";
    return strncasecmp(url, LOCAL, sizeof LOCAL - 1) == 0;
}

bool SplitUrl(const String_t &url, String_t &scheme, String_t &rest) {
    const std::size_t colon = url.find(':');
    if (colon == String_t::npos)
        return false;
    String_t head = url.substr(0, colon);
    String_t tail = url.substr(colon + 1);
    scheme.swap(head); // from here on the text may be gone: an output may be the string that was passed in
    rest.swap(tail);
    return true;
}

bool SplitLocalUrl(const String_t &url, String_t &fileName, String_t &extension, unsigned int &address,
                   std::size_t &length) {
    String_t scheme;
    String_t rest = url;
    if (IsLocalUrl(url))
        SplitUrl(url, scheme, rest);
    const std::string text = rest.c_str();
    const std::size_t nameEnd = text.find(';');
    const std::size_t dot = text.substr(0, nameEnd).rfind('.');
    unsigned long long start = 0; // wide, so that a number that does not fit is seen
    unsigned long long size = 0;
    if (nameEnd == std::string::npos || dot == std::string::npos ||
        std::sscanf(text.c_str() + nameEnd + 1, "%llx;%llx", &start, &size) != 2 || start > UINT32_MAX ||
        size > UINT32_MAX)
        return false;
    fileName = text.substr(0, dot);
    extension = text.substr(dot, nameEnd - dot);
    address = static_cast<unsigned int>(start);
    length = size;
    return true;
}

std::uint32_t GetDefaultHeartbeatTimeout() {
    constexpr std::uint32_t DEFAULT_MS = 300000;
    String_t text;
    if (!GetValueOfEnvironmentVariable("CORVO_GIGE_HEARTBEAT", text))
        return DEFAULT_MS;
    const long timeout_ms = std::strtol(text, nullptr, 10);
    return timeout_ms > 0 ? static_cast<std::uint32_t>(timeout_ms) : DEFAULT_MS;
}

const CTlInfo &GetTLInfoImplGigE() {
    static const CTlInfo info = MakeGigETlInfo();
    return info;
}

} // namespace Corvo
