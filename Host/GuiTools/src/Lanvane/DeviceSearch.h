#pragma once

#include "Lanvane/DeviceLister.h"
#include "Lanvane/Operation.h"
#include "Lanvane/Situation.h"

#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

/// A diagnosis that shows what it finds: the cameras when the discovery is over, their verdicts as they come, the
/// hidden ones at the end. It fills a lister's list, which is the GUI thread's meanwhile, and gives that thread little
/// to do at a time.
class DeviceSearch {
public:
    using Show = std::function<void(const Corvo::CDeviceInfo &device)>;
    struct Display {
        std::function<void(const std::vector<commissioning::Adapter> &adapters)> survey; ///< before there are rows
        Show add;                  ///< a row, in the order in which they are shown
        std::function<void()> end; ///< after the last row
        Show judge;                ///< a row whose verdict is known
    };

    /// All of it outlives the search; the display is called on the GUI thread.
    /// \param options what is told to somebody is the display's.
    DeviceSearch(Operation &operation, DeviceLister &lister, Corvo::IGigETransportLayer &layer, Display display,
                 commissioning::DiagnosisOptions options);

    /// On the operation's thread. A search that is cancelled leaves and shows what it has found, or what was known
    /// before. \throws GenericException what the transport layer raises; the list is then as it was.
    void run();
    /// The same of the host alone, where there is no adapter to search on.
    void runWithoutSearch();
    /// How far it got; to be called once, after it.
    Situation takeSituation() { return std::move(m_Situation); }

private:
    void search();
    void show(const Corvo::DeviceInfoList &devices);
    void takeVerdict(const Corvo::CDeviceInfo &device);
    std::optional<Corvo::CDeviceInfo> nextJudged();
    /// For as long as the GUI thread may be kept, and again later. \returns whether there were no more.
    bool showVerdicts();
    void showAllVerdicts();

    Operation &m_Operation;
    DeviceLister &m_Lister;
    Corvo::IGigETransportLayer &m_Layer;
    Display m_Display;
    commissioning::DiagnosisOptions m_Options;
    commissioning::Diagnosis m_Diagnosis;
    Situation m_Situation;
    bool m_IsShown = false;
    std::mutex m_Lock; ///< guards what follows
    std::deque<Corvo::CDeviceInfo> m_Judged;
};
