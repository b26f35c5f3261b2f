#include "commissioning/ListenerClient.h"

#include "ChildProcess.h"
#include "commissioning/AddressText.h"
#include "gxapi/GvcpMessages.h"

#include <algorithm>
#include <arpa/inet.h>
#include <charconv>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <map>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>

namespace commissioning {

namespace {

constexpr std::size_t MaxLineBytes = 1024;
constexpr std::size_t MaxAcknowledges = 16384;

/// Takes the first word off a line.
std::string_view nextWord(std::string_view &line) {
    const std::size_t end = std::min(line.find(' '), line.size());
    const std::string_view word = line.substr(0, end);
    line.remove_prefix(std::min(end + 1, line.size()));
    return word;
}

template <class Number> std::optional<Number> number(std::string_view text, int base = 10) {
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

std::optional<Address> addressOf(std::string_view text) {
    in_addr address{};
    if (inet_pton(AF_INET, std::string(text).c_str(), &address) != 1)
        return {};
    return ntohl(address.s_addr);
}

std::optional<GEV_DISCOVERY_INFO> infoOf(std::string_view digits) {
    GEV_DISCOVERY_INFO info{};
    unsigned char bytes[sizeof info];
    if (digits.size() != 2 * sizeof info)
        return {};
    for (std::size_t i = 0; i < sizeof info; ++i) {
        const auto value = number<unsigned char>(digits.substr(2 * i, 2), 16);
        if (!value)
            return {};
        bytes[i] = *value;
    }
    std::memcpy(&info, bytes, sizeof info);
    return info;
}

template <std::size_t Size> std::string textOf(const char (&field)[Size]) { return {field, strnlen(field, Size)}; }

std::string macOf(const GEV_MAC_ADDRESS &mac) {
    char text[13];
    std::snprintf(text, sizeof text, "%04X%08X", ntohl(mac.High) & 0xFFFF, ntohl(mac.Low));
    return text;
}

std::uint32_t wordIn(const GEV_IP_CONFIG &config) {
    std::uint32_t word = 0;
    std::memcpy(&word, &config, sizeof word);
    return ntohl(word);
}

std::vector<Mode> modesOf(std::uint32_t word) {
    std::vector<Mode> modes;
    for (const auto &[bit, mode] :
         {std::pair(GEV_IP_CONFIG_PERSISTENT_IP, Mode::Static), std::pair(GEV_IP_CONFIG_DHCP, Mode::Dhcp),
          std::pair(GEV_IP_CONFIG_LLA, Mode::Auto)}) {
        if ((word & bit) != 0)
            modes.push_back(mode);
    }
    return modes;
}

Camera cameraOf(const GEV_DISCOVERY_INFO &info) {
    Camera camera;
    camera.mac = macOf(info.DeviceMacAddress);
    camera.vendor = textOf(info.Description.ManufacturerName);
    camera.model = textOf(info.Description.ModelName);
    camera.serial = textOf(info.Description.SerialNumber);
    camera.name = textOf(info.Description.UserDefinedName);
    camera.address = ntohl(info.CurrentIP.IPv4.Address);
    camera.mask = ntohl(info.CurrentSubnetMask.IPv4.Address);
    camera.gateway = ntohl(info.DefaultGateway.IPv4.Address);
    camera.modes = modesOf(wordIn(info.IPConfigOptions));
    camera.word = wordIn(info.IPConfigCurrent);
    const std::vector<Mode> enabled = modesOf(camera.word);
    if (!enabled.empty())
        camera.mode = enabled.front();
    return camera;
}

} // namespace

void ListenerLines::add(std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        m_Rest += text.substr(0, end);
        m_IsSkipping = m_IsSkipping || m_Rest.size() > MaxLineBytes;
        if (m_IsSkipping)
            m_Rest.clear();
        if (end == std::string_view::npos)
            return;
        if (!m_IsSkipping)
            takeLine(m_Rest);
        m_Rest.clear();
        m_IsSkipping = false;
        text.remove_prefix(end + 1);
    }
}

void ListenerLines::takeLine(std::string_view line) {
    constexpr std::size_t MaxAdapters = 1024;
    const std::string_view kind = nextWord(line);
    if (kind == "ready" && m_Report.adapters.size() < MaxAdapters) {
        m_Report.state = ListenerReport::State::Heard;
        m_Report.adapters.emplace_back(line);
        ++m_Settled;
    } else if (kind == "failed") {
        ++m_Settled;
    } else if (kind == "denied") {
        m_Report.state = ListenerReport::State::Denied;
        m_Report.program = line;
        m_Settled = MaxAdapters;
    } else if (kind == "dropped") {
        m_Report.dropped = number<std::uint64_t>(line).value_or(m_Report.dropped);
    } else if (kind == "ack") {
        takeAcknowledge(line);
    }
}

void ListenerLines::takeAcknowledge(std::string_view words) {
    SeenAcknowledge seen;
    seen.adapter = nextWord(words);
    const auto time_us = number<std::int64_t>(nextWord(words));
    const auto sender = addressOf(nextWord(words));
    const auto info = infoOf(words);
    const bool isReady =
        std::find(m_Report.adapters.begin(), m_Report.adapters.end(), seen.adapter) != m_Report.adapters.end();
    if (!isReady || !time_us || *time_us < 0 || *time_us > INT64_MAX / 1000 || !sender || !info ||
        m_Report.seen.size() >= MaxAcknowledges)
        return;
    seen.time = std::chrono::steady_clock::time_point(std::chrono::microseconds(*time_us));
    seen.sender = *sender;
    seen.camera = cameraOf(*info);
    if (m_Known.insert(seen.adapter + " " + seen.camera.mac + " " + toText(seen.camera.address)).second)
        m_Report.seen.push_back(std::move(seen));
}

/// The program and the thread that reads what it writes.
class ListenerClient::Running {
public:
    explicit Running(const std::vector<std::string> &command)
        : m_AdapterCount(command.size() - 1), m_Program(command), m_Reader([this] { read(); }) {}
    ~Running() { stop(); }

    void waitUntilReady(std::chrono::milliseconds patience) {
        std::unique_lock<std::mutex> lock(m_Mutex);
        m_Changed.wait_for(lock, patience, [this] { return m_HasEnded || m_Lines.settled() >= m_AdapterCount; });
    }
    ListenerReport stop() {
        if (m_Reader.joinable()) {
            m_Program.closeInput();
            {
                std::unique_lock<std::mutex> lock(m_Mutex);
                if (!m_Changed.wait_for(lock, std::chrono::milliseconds(500), [this] { return m_HasEnded; }))
                    m_IsGivenUp = true;
            }
            m_Reader.join();
        }
        return m_Lines.report();
    }

private:
    void read() {
        using namespace std::chrono;
        for (bool goesOn = true; goesOn;) {
            std::string text;
            const auto deadline = steady_clock::now() + milliseconds(50);
            const bool isMore = m_Program.read(text, deadline) || steady_clock::now() >= deadline;
            const std::lock_guard<std::mutex> lock(m_Mutex);
            m_Lines.add(text);
            goesOn = isMore && !m_IsGivenUp;
            m_HasEnded = !goesOn;
            m_Changed.notify_all();
        }
    }

    std::size_t m_AdapterCount;
    ChildProcess m_Program;
    std::mutex m_Mutex; ///< of all below but the thread
    std::condition_variable m_Changed;
    ListenerLines m_Lines;
    bool m_HasEnded = false;
    bool m_IsGivenUp = false;
    std::thread m_Reader;
};

ListenerClient::ListenerClient(const std::vector<std::string> &adapters, const std::string &program) {
    std::vector<std::string> command{program};
    command.insert(command.end(), adapters.begin(), adapters.end());
    try {
        if (!adapters.empty())
            m_Running = std::make_unique<Running>(command);
    } catch (const std::system_error &) { // It is not installed, or the host has no more processes or threads.
    }
}

ListenerClient::~ListenerClient() = default;

void ListenerClient::waitUntilReady(std::chrono::milliseconds patience) const {
    if (m_Running)
        m_Running->waitUntilReady(patience);
}

ListenerReport ListenerClient::finish() { return m_Running ? m_Running->stop() : ListenerReport(); }

std::vector<Camera> hiddenCameras(const ListenerReport &report, const std::vector<Camera> &cameras,
                                  std::chrono::steady_clock::time_point end) {
    std::set<std::string> heard;
    for (const Camera &camera : cameras)
        heard.insert(camera.mac);
    std::vector<Camera> hidden;
    std::map<std::string, std::size_t> places;
    for (const SeenAcknowledge &seen : report.seen) {
        if (seen.time > end || heard.count(seen.camera.mac) != 0)
            continue;
        const auto [place, isNew] = places.emplace(seen.camera.mac, hidden.size());
        if (isNew)
            hidden.push_back(seen.camera);
        hidden[place->second].hidden = true;
        std::vector<std::string> &adapters = hidden[place->second].adapters;
        const auto at = std::lower_bound(adapters.begin(), adapters.end(), seen.adapter);
        if (at == adapters.end() || *at != seen.adapter)
            adapters.insert(at, seen.adapter);
    }
    return hidden;
}

} // namespace commissioning
