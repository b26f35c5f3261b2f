#include "Lanvane/DeviceSearch.h"

#include "Lanvane/DeviceDisplay.h"
#include "commissioning/Search.h"

#include <QElapsedTimer>

#include <algorithm>
#include <utility>
#include <vector>

using namespace Corvo;

namespace {

constexpr int Slice_ms = 15; ///< that the GUI thread is kept for

/// By model and, of one model, by MAC address.
std::vector<DIPtrAndIndexPair> sorted(const DeviceInfoList &devices) {
    std::vector<DIPtrAndIndexPair> entries;
    for (const CDeviceInfo &device : devices)
        entries.push_back({&device, static_cast<int>(entries.size())});
    std::stable_sort(entries.begin(), entries.end(), CompareDIByProps{"ModelName", PropMacAddress});
    return entries;
}

} // namespace

DeviceSearch::DeviceSearch(Operation &operation, DeviceLister &lister, IGigETransportLayer &layer, Display display)
    : m_Operation(operation), m_Lister(lister), m_Layer(layer), m_Display(std::move(display)) {}

void DeviceSearch::run() {
    try {
        search();
    } catch (const commissioning::Cancelled &) {
        if (!m_IsShown)
            show(m_Lister.devices());
        showAllVerdicts();
        throw;
    }
    showAllVerdicts();
}

void DeviceSearch::search() {
    commissioning::SearchOptions options;
    options.found = [this](const DeviceInfoList &devices) { show(devices); };
    options.judged = [this](const CDeviceInfo &device) { takeVerdict(device); };
    const Gx::CStopScope scope(m_Operation.token());
    commissioning::search(m_Layer, options);
}

void DeviceSearch::show(const DeviceInfoList &devices) {
    std::vector<std::size_t> order;
    for (const DIPtrAndIndexPair &entry : sorted(devices))
        order.push_back(static_cast<std::size_t>(entry.m_DIIndex));
    DeviceLister::Content content(devices);
    m_Operation.onGui([&] { m_Lister.swap(content); });
    for (auto next = order.begin(); next != order.end();) {
        m_Operation.onGui([&] {
            QElapsedTimer elapsed;
            for (elapsed.start(); next != order.end() && elapsed.elapsed() < Slice_ms; ++next)
                m_Display.add(m_Lister.devices()[*next]);
        });
    }
    m_Operation.onGui(m_Display.end);
    m_IsShown = true;
}

void DeviceSearch::takeVerdict(const CDeviceInfo &device) {
    if (m_Operation.isCancelled()) // then it is not the device that did not answer
        return;
    const std::lock_guard<std::mutex> lock(m_Lock);
    m_Judged.push_back(device);
    if (m_Judged.size() == 1)
        m_Operation.post([this] { showVerdicts(); });
}

std::optional<CDeviceInfo> DeviceSearch::nextJudged() {
    const std::lock_guard<std::mutex> lock(m_Lock);
    if (m_Judged.empty())
        return std::nullopt;
    std::optional<CDeviceInfo> next(std::move(m_Judged.front()));
    m_Judged.pop_front();
    return next;
}

bool DeviceSearch::showVerdicts() {
    QElapsedTimer elapsed;
    elapsed.start();
    while (const std::optional<CDeviceInfo> judged = nextJudged()) {
        if (CDeviceInfo *const device = m_Lister.find(displayText(*judged, PropMacAddress))) {
            *device = *judged;
            m_Display.judge(*device);
        }
        if (elapsed.elapsed() < Slice_ms)
            continue;
        m_Operation.post([this] { showVerdicts(); });
        return false;
    }
    return true;
}

/// What was posted comes before the end of the operation.
void DeviceSearch::showAllVerdicts() {
    for (bool isDone = false; !isDone;)
        m_Operation.onGui([&] { isDone = showVerdicts(); });
}
