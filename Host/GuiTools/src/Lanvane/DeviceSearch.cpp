#include "Lanvane/DeviceSearch.h"

#include "Lanvane/DeviceDisplay.h"
#include "commissioning/Diagnosis.h"
#include "commissioning/Survey.h"
#include "gxapi/StopToken.h"

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

DeviceSearch::DeviceSearch(Operation &operation, DeviceLister &lister, IGigETransportLayer &layer, Display display,
                           commissioning::DiagnosisOptions options)
    : m_Operation(operation), m_Lister(lister), m_Layer(layer), m_Display(std::move(display)),
      m_Options(std::move(options)) {}

void DeviceSearch::run() {
    try {
        search();
    } catch (const commissioning::Cancelled &) {
        if (!m_IsShown)
            show(m_Lister.devices());
        showAllVerdicts();
        m_Diagnosis.observation.cameras = commissioning::inventoryOf(m_Lister.devices()).cameras;
        m_Situation = Situation(std::move(m_Diagnosis), false);
        throw;
    }
    showAllVerdicts();
    m_Diagnosis.devices = {}; // the lister has them
    m_Situation = Situation(std::move(m_Diagnosis), true);
}

void DeviceSearch::runWithoutSearch() {
    const Gx::CStopScope scope(m_Operation.token());
    commissioning::Observation &observation = m_Diagnosis.observation;
    observation.adapters = commissioning::surveyAdapters();
    completeFromHost(observation, m_Options.earlier);
    m_Diagnosis.findings = findingsOf(observation);
    m_Situation = Situation(std::move(m_Diagnosis), true);
}

void DeviceSearch::search() {
    m_Options.surveyed = [this](const std::vector<commissioning::Adapter> &adapters) {
        m_Diagnosis.observation.adapters = adapters; // what there is of a search that is cancelled
        m_Operation.onGui([&] { m_Display.survey(adapters); });
    };
    m_Options.search.found = [this](const DeviceInfoList &devices) { show(devices); };
    m_Options.search.judged = [this](const CDeviceInfo &device) { takeVerdict(device); };
    const Gx::CStopScope scope(m_Operation.token());
    m_Diagnosis = diagnose(m_Layer, m_Options);
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
