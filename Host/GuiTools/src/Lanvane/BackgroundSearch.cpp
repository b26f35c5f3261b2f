#include "Lanvane/BackgroundSearch.h"

#include "Base/GCException.h"

#include <exception>
#include <utility>

namespace {

constexpr std::chrono::seconds Interval{30};

} // namespace

BackgroundSearch::BackgroundSearch(std::function<Corvo::IGigETransportLayer &()> layer, std::function<bool()> isBusy,
                                   commissioning::HostRecollection &host, Found found, Failed failed)
    : m_Layer(std::move(layer)), m_IsBusy(std::move(isBusy)), m_Host(host), m_Found(std::move(found)),
      m_Failed(std::move(failed)) {
    m_Timer.setInterval(Interval);
    connect(&m_Timer, &QTimer::timeout, this, &BackgroundSearch::begin);
}

BackgroundSearch::~BackgroundSearch() { end(); }

void BackgroundSearch::setEnabled(bool isEnabled) {
    if (!isEnabled)
        return m_Timer.stop();
    m_Timer.start();
    QTimer::singleShot(0, this, &BackgroundSearch::begin); // the window's first refresh comes first
}

std::shared_future<commissioning::Diagnosis> BackgroundSearch::search() {
    const std::lock_guard<std::mutex> lock(m_Lock);
    return m_Search;
}

void BackgroundSearch::end() {
    if (const auto running = search(); running.valid()) {
        m_Token->RequestStop();
        running.wait();
    }
    m_Recollection = {};
}

void BackgroundSearch::begin() try {
    const std::lock_guard<std::mutex> lock(m_Lock);
    if (m_Search.valid() || m_IsBusy() || !isEnabled())
        return;
    const auto now = std::chrono::steady_clock::now();
    commissioning::DiagnosisOptions options;
    m_Recollection.attach(&options.search, now);
    m_Host.attach(&options, now);
    m_Token.emplace();
    m_Search = std::async(std::launch::async, [this, options, &layer = m_Layer()] {
                   const Gx::CStopScope scope(&*m_Token);
                   const auto tell = [this](void *) {
                       QMetaObject::invokeMethod(
                           this, [this] { take(); }, Qt::QueuedConnection);
                   };
                   const std::unique_ptr<void, decltype(tell)> atEnd(this, tell);
                   return diagnose(layer, options);
               }).share();
} catch (...) { // no transport layer, or no thread
    m_Failed();
}

void BackgroundSearch::take() {
    const std::shared_future<commissioning::Diagnosis> ended = search();
    {
        const std::lock_guard<std::mutex> lock(m_Lock);
        m_Search = {};
    }
    if (m_Token->IsStopRequested() || m_IsBusy() || !isEnabled())
        return;
    try {
        commissioning::Diagnosis diagnosis = ended.get();
        m_Host.learn(diagnosis.observation);
        m_Found(std::move(diagnosis));
    } catch (...) {
        m_Failed();
    }
}
