#pragma once

#include "MinimalCorvoGigETL/IGigETransportLayer.h"
#include "commissioning/Diagnosis.h"
#include "commissioning/Recollection.h"
#include "gxapi/StopToken.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>

/// Searches again and again on a thread of its own, beside what the user does, and asks few cameras each time. It is no
/// operation: one that begins ends the search (end), whose outcome is then dropped.
class BackgroundSearch : public QObject {
    Q_OBJECT

public:
    using Found = std::function<void(commissioning::Diagnosis diagnosis)>;
    using Failed = std::function<void()>;

    // GUI thread.

    /// Begins every half a minute, as a watch does. \param isBusy whether no search may begin now, and the outcome of
    /// one that has begun does not count. \param host what is known of its programs; not owned.
    BackgroundSearch(std::function<Corvo::IGigETransportLayer &()> layer, std::function<bool()> isBusy,
                     commissioning::HostRecollection &host, Found found, Failed failed);
    ~BackgroundSearch() override;

    /// The first search begins soon.
    void setEnabled(bool isEnabled);
    bool isEnabled() const { return m_Timer.isActive(); }
    void setInterval(std::chrono::milliseconds interval) { m_Timer.setInterval(interval); }

    // The thread of an operation, which the GUI thread waits for.

    /// Stops the search and waits for its end, 100 ms mostly. The next one asks all cameras, as operations change them.
    void end();

private:
    void begin();
    void take();
    std::shared_future<commissioning::Diagnosis> search();

    std::function<Corvo::IGigETransportLayer &()> m_Layer;
    std::function<bool()> m_IsBusy;
    commissioning::HostRecollection &m_Host;
    Found m_Found;
    Failed m_Failed;
    QTimer m_Timer;
    commissioning::Recollection m_Recollection; ///< the search's while there is one
    std::optional<Gx::CStopToken> m_Token;
    std::mutex m_Lock;                                     ///< guards what follows
    std::shared_future<commissioning::Diagnosis> m_Search; ///< valid until its outcome was taken
};
