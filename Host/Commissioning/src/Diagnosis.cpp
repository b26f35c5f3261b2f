#include "commissioning/Diagnosis.h"

#include "HolderProcess.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Search.h"
#include "gxapi/Enumerator.h"
#include "gxapi/StopToken.h"

#include <algorithm>
#include <set>
#include <thread>
#include <tuple>

namespace commissioning {

namespace {

using Clock = std::chrono::steady_clock;

/// The counters since it was made.
class Interval {
public:
    Counters counters() const { return readCounters() - m_Before; }
    Clock::duration length() const { return Clock::now() - m_Start; }
    std::uint64_t drops() const { return Gx::Enumerator::DroppedDatagrams() - m_DropsBefore; }

private:
    Counters m_Before = readCounters();
    std::uint64_t m_DropsBefore = Gx::Enumerator::DroppedDatagrams();
    Clock::time_point m_Start = Clock::now();
};

constexpr std::chrono::milliseconds QuietTime{500};

Counters measureQuiet() {
    const Interval interval;
    while (interval.length() < QuietTime && !Gx::CStopScope::IsStopRequested())
        std::this_thread::sleep_for(QuietTime / 20);
    return interval.counters();
}

std::vector<Answer> answersOf(const Corvo::DeviceInfoList &devices) {
    std::vector<Answer> answers;
    for (const Corvo::CDeviceInfo &device : devices) {
        const Camera camera = cameraOf(Corvo::CQuorelGigEDeviceInfo(device));
        answers.push_back({camera.mac, camera.address, camera.vendor, camera.model, camera.serial});
    }
    std::sort(answers.begin(), answers.end(), [](const Answer &a, const Answer &b) {
        return std::tie(a.mac, a.serial, a.address) < std::tie(b.mac, b.serial, b.address);
    });
    return answers;
}

/// The search itself; its counters are those until the last answer, before cameras are probed.
Clock::time_point searchAndCount(Corvo::IGigETransportLayer &layer, SearchOptions options, Diagnosis &diagnosis) {
    Observation &observation = diagnosis.observation;
    const Interval interval;
    Clock::time_point end = Clock::now();
    options.heard = [&, told = options.heard](const Corvo::DeviceInfoList &heard) {
        end = Clock::now();
        observation.during = interval.counters();
        observation.overrun = interval.drops();
        const std::chrono::duration<double> length = interval.length();
        if (observation.quiet && length > QuietTime)
            observation.quiet = *observation.quiet * (length / QuietTime);
        observation.answers = answersOf(heard);
        if (told)
            told(heard);
    };
    diagnosis.devices = search(layer, options);
    observation.during.tableFulls = interval.counters().tableFulls; // the probes need neighbours as well
    return end;
}

/// The processes of this host that hold cameras.
void nameHolders(Observation &observation) {
    std::set<Address> own;
    for (const Adapter &adapter : observation.adapters) {
        for (const AdapterAddress &entry : adapter.addresses)
            own.insert(entry.address);
    }
    for (Camera &camera : observation.cameras) {
        if (camera.holder && own.count(camera.holder->address) != 0)
            camera.holder->process = processOf(camera.holder->address, camera.holder->port);
    }
}

} // namespace

Diagnosis diagnose(Corvo::IGigETransportLayer &layer, const DiagnosisOptions &options) {
    Diagnosis diagnosis;
    Observation &observation = diagnosis.observation;
    observation.adapters = surveyAdapters();
    for (const Adapter &adapter : observation.adapters) {
        if (isUsable(adapter))
            observation.searched.insert(adapter.name);
    }
    if (options.surveyed)
        options.surveyed(observation.adapters);
    if (options.measuresQuiet)
        observation.quiet = measureQuiet();
    std::vector<std::string> listenedOn;
    if (!options.listener.empty())
        listenedOn.assign(observation.searched.begin(), observation.searched.end());
    ListenerClient listener(listenedOn, options.listener);
    listener.waitUntilReady(options.listenerPatience);
    const Clock::time_point end = searchAndCount(layer, options.search, diagnosis);
    observation.listener = listener.finish();
    observation.cameras = inventoryOf(diagnosis.devices).cameras;
    for (Camera &hidden : hiddenCameras(observation.listener, observation.cameras, end))
        observation.cameras.push_back(std::move(hidden));
    std::sort(observation.cameras.begin(), observation.cameras.end(),
              [](const Camera &a, const Camera &b) { return a.mac < b.mac; }); // they answer in an order of chance
    nameHolders(observation);
    completeFromHost(observation, options.earlier);
    if (Gx::CStopScope::IsStopRequested())
        throw Cancelled();
    diagnosis.findings = findingsOf(observation);
    return diagnosis;
}

Inventory inventoryOf(const Diagnosis &diagnosis) {
    return {diagnosis.observation.adapters, diagnosis.observation.cameras, diagnosis.findings};
}

} // namespace commissioning
