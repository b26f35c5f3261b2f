#include "MinimalCorvoGigETL/XmlFileProvider.h"

#include "MinimalCorvoGigETL/ControlChannelPtr.h"
#include "MinimalCorvoGigETL/DeviceNodeMap.h"
#include "MinimalCorvoGigETL/GigETlTrace.h"
#include "MinimalCorvoGigETL/GxPort.h"
#include "MinimalCorvoGigETL/GxStatus2Msg.h"
#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"
#include "MinimalCorvoGigETL/tools.h"

#include "Base/GCException.h"

#include <algorithm>
#include <chrono>
#include <cstring>

namespace Corvo {

namespace {

constexpr std::size_t UrlBytes = 512;
constexpr std::size_t MaxFileBytes = 16u << 20;
/// A description takes hundreds of transactions; on a link that loses a fifth of them the usual 2 are not enough.
constexpr std::uint32_t ReadRetries = 8;
constexpr int Role = 0;

/// A port to a device that is only read.
class CMonitorPort {
public:
    /// \param timeLimit from now, for all that is read.
    CMonitorPort(const CQuorelGigEDeviceInfo &info, std::chrono::milliseconds timeLimit)
        : m_info(info), m_end(Clock::now() + timeLimit) {
        Open();
    }
    ~CMonitorPort() { m_port.DetachControlChannel(); }
    CMonitorPort(const CMonitorPort &) = delete;
    CMonitorPort &operator=(const CMonitorPort &) = delete;

    CGxPort *operator->() { return &m_port; }

    /// A device that denied an access is lost to the channel it denied it on.
    void Reopen() {
        m_port.DetachControlChannel();
        m_channel.reset();
        Open();
    }

private:
    void Open() {
        const GXSTATUS status = OpenControlChannel(m_info, 0, &m_channel, TimeLeft_ms());
        if (status != GX_SUCCESS)
            throw RUNTIME_EXCEPTION(
                "Failed to download the XML configuration file from device '%s': %s (0x%08X) role=%i\n",
                m_info.GetFullName().c_str(), GxStatus2Msg(status).c_str(), status, Role);
        (void)m_channel->SetProperty(Gx::ControlChannel::MaxRetryCountRead, &ReadRetries, sizeof ReadRetries);
        m_port.AttachControlChannel(*m_channel, AccessModeSet());
    }
    std::uint32_t TimeLeft_ms() const {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(m_end - Clock::now());
        return static_cast<std::uint32_t>(std::max<std::int64_t>(left.count(), 0));
    }

    using Clock = std::chrono::steady_clock;
    const CQuorelGigEDeviceInfo &m_info;
    const Clock::time_point m_end;
    ControlChannelPtr m_channel;
    CGxPort m_port;
};

/// Some devices put a byte order mark before the text or blanks around its parts.
String_t Tidied(std::string url) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    if (std::string_view(url).substr(0, mark.size()) == mark)
        url.erase(0, mark.size());
    const auto isBlank = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
    url.erase(std::remove_if(url.begin(), url.end(), isBlank), url.end());
    return url;
}

String_t ReadUrl(CMonitorPort &port, std::uint32_t address) {
    char text[UrlBytes];
    port->Read(text, address, sizeof text);
    return Tidied(copyWithMaxLen(text, sizeof text));
}

/// What follows the scheme of the first local URL.
String_t ReadLocalUrl(CMonitorPort &port, const CQuorelGigEDeviceInfo &info) {
    for (const std::uint32_t address : {GEV_REG_FIRST_URL, GEV_REG_SECOND_URL}) {
        String_t scheme;
        String_t rest;
        if (SplitUrl(ReadUrl(port, address), scheme, rest) && IsLocalUrl(scheme))
            return rest;
    }
    throw RUNTIME_EXCEPTION("Camera %s doesn't provide a local URL", info.GetFullName().c_str());
}

struct SLocalFile {
    String_t Extension;
    unsigned int Address = 0;
    std::size_t Length = 0;
};

SLocalFile FindFile(CMonitorPort &port, const CQuorelGigEDeviceInfo &info) {
    SLocalFile file;
    String_t name;
    if (!SplitLocalUrl(ReadLocalUrl(port, info), name, file.Extension, file.Address, file.Length))
        throw RUNTIME_EXCEPTION("Camera %s doesn't provide a valid local URL", info.GetFullName().c_str());
    if (file.Length > MaxFileBytes)
        throw RUNTIME_EXCEPTION("The XML file of camera %s has %zu bytes, more than the %zu allowed",
                                info.GetFullName().c_str(), file.Length, MaxFileBytes);
    return file;
}

/// Reads a few bytes that fill no whole word. A strict device serves only whole words, another one perhaps nothing
/// behind the end of the file.
void ReadTail(CMonitorPort &port, std::int64_t address, std::uint8_t *bytes, std::size_t size) {
    std::uint8_t words[12];
    try {
        port->Read(words, address, static_cast<std::int64_t>((size + 3) / 4 * 4));
        std::memcpy(bytes, words, size);
    } catch (const GenICam::RuntimeException &) {
        port.Reopen();
        port->Read(bytes, address, static_cast<std::int64_t>(size));
    }
}

/// Bytes at the end to be read as such a tail. It takes a whole word along, and leaves none alone before it: the port
/// would read 4 bytes as a register, which a file need not be.
std::size_t TailOf(std::size_t length) {
    const std::size_t surplus = length % 4;
    if (surplus == 0 || length < 4)
        return 0;
    return length < 12 ? length : 4 + surplus;
}

std::vector<std::uint8_t> ReadFile(CMonitorPort &port, const SLocalFile &file) {
    std::vector<std::uint8_t> bytes(file.Length);
    const std::size_t tail = TailOf(file.Length);
    const std::size_t body = file.Length - tail;
    if (body > 0)
        port->Read(bytes.data(), file.Address, static_cast<std::int64_t>(body));
    if (tail > 0)
        ReadTail(port, std::int64_t{file.Address} + static_cast<std::int64_t>(body), bytes.data() + body, tail);
    return bytes;
}

} // namespace

void XmlFileProviderPrivateImpl::ProvideXmlFileRaw(const CQuorelGigEDeviceInfo &info,
                                                   std::vector<std::uint8_t> &bytes) const {
    tracelog::LogTrace(GigETlTraceCategory(), tracelog::lvInfo, "Download the XML configuration file from '%s'",
                       info.GetFullName().c_str());
    SLocalFile file;
    {
        CMonitorPort port(info, m_timeLimit);
        file = FindFile(port, info);
        bytes = ReadFile(port, file);
    }
    // In exactly this spelling, on purpose.
    if (file.Extension != ".xml" && file.Extension != ".zip")
        throw RUNTIME_EXCEPTION("XML file in device has unsupported file extension %s", file.Extension.c_str());
}

void XmlFileProviderPrivateImpl::ProvideXmlFile(const CQuorelGigEDeviceInfo &info, String_t &fileName,
                                                String_t &xmlText) const {
    fileName.clear();
    xmlText.clear();
    std::vector<std::uint8_t> bytes;
    ProvideXmlFileRaw(info, bytes);
    if (bytes.size() <= 4)
        throw RUNTIME_EXCEPTION("Failed to get XML from Device");
    if (!IsZipped(bytes)) {
        xmlText = std::string(bytes.begin(), bytes.end());
        return;
    }
    GenApi::CNodeMapFactory factory(GenApi::ContentType_ZippedXml, bytes.data(), bytes.size());
    factory.Preprocess();
    xmlText = factory.ToXml();
}

} // namespace Corvo
