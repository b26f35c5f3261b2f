#include "Watch.h"

#include "Base/GCException.h"
#include "EventText.h"
#include "ExitCode.h"
#include "FileReading.h"
#include "FileWriting.h"
#include "Metrics.h"
#include "Pages.h"
#include "Text.h"
#include "commissioning/Recollection.h"

#include <cmath>
#include <iostream>
#include <poll.h>
#include <unistd.h>

using namespace commissioning;

namespace commandline {

namespace {

using Clock = std::chrono::steady_clock;
using WallClock = std::chrono::system_clock;

bool isReaderGone() {
    pollfd output{STDOUT_FILENO, 0, 0};
    return !std::cout || (poll(&output, 1, 0) > 0 && (output.revents & (POLLERR | POLLHUP | POLLNVAL)) != 0);
}

double secondsOf(Clock::duration time) { return std::chrono::duration<double>(time).count(); }

class Watch {
public:
    Watch(const Arguments &arguments, Session &session, const Terminal &terminal)
        : m_Arguments(arguments), m_Session(session), m_Terminal(terminal) {}

    int run() {
        tellVersion();
        const auto interval =
            std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(m_Arguments.interval_s));
        const Clock::time_point first = Clock::now();
        do {
            if (!round())
                return ExitDone;
        } while (waitUntil(nextRound(first, interval, Clock::now())));
        return isReaderGone() && !m_Session.interruption().isRequested() ? ExitFailed : ExitDone;
    }

private:
    /// \returns false when it was interrupted.
    bool round() {
        std::string failure;
        ++m_Measured.searches;
        try {
            search();
        } catch (const Cancelled &) {
            return false;
        } catch (const GenICam::GenericException &error) {
            failure = error.GetDescription();
        } catch (const std::exception &error) {
            failure = error.what();
        }
        m_Measured.failedSearches += failure.empty() ? 0 : 1;
        tellSearch(failure);
        if (failure.empty())
            compare();
        if (!m_Arguments.metrics.empty())
            writeMetrics();
        return !m_Session.interruption().isRequested();
    }

    void search() {
        const Clock::time_point begin = Clock::now();
        DiagnosisOptions options;
        m_Recollection.attach(&options.search, begin);
        m_Host.attach(&options, begin);
        m_Session.search(std::move(options));
        const Observation &seen = m_Session.diagnosis().observation;
        m_Host.learn(seen);
        m_Measured.droppedAnswers += seen.overrun;
        m_Measured.searchDuration_s = secondsOf(Clock::now() - begin);
        m_Measured.lastSuccess_s = std::chrono::duration<double>(WallClock::now().time_since_epoch()).count();
    }

    void compare() {
        std::vector<Event> events = m_Watcher.compare(m_Session.inventory());
        if (!m_HasSnapshot)
            tellSnapshot();
        m_HasSnapshot = true;
        if (!m_Arguments.plan.empty()) {
            const std::vector<Event> more = m_Watcher.compare(readPlanFile());
            events.insert(events.end(), more.begin(), more.end());
            m_Measured.offPlan = m_Watcher.offPlan();
        }
        for (const Event &event : events)
            tell(eventText(event, m_Terminal), eventJson(event));
    }

    /// Read each time, as it is small and may have been changed.
    Plan readPlanFile() const {
        try {
            return readPlan(readFile(m_Arguments.plan, MaxPlanBytes + 1));
        } catch (const std::system_error &) {
            Plan plan;
            plan.problems.push_back({0, 0, "The plan " + m_Arguments.plan + " cannot be read."});
            return plan;
        }
    }

    void writeMetrics() {
        m_Measured.inventory = m_Watcher.present();
        std::string problem;
        try {
            constexpr mode_t Readable = 0644; // by the node exporter, which is another user
            writeFile(m_Arguments.metrics, metricsText(m_Measured), Readable, Existing::Replace);
        } catch (const std::system_error &error) {
            problem = error.what();
        }
        if (!problem.empty() && problem != m_MetricsProblem)
            m_Terminal.complain("The metrics cannot be written: " + harmless(problem));
        m_MetricsProblem = problem;
    }

    void tellVersion() const {
        if (m_Arguments.json)
            m_Terminal.print(eventLine({{"event", "version"},
                                        {"format", 1},
                                        {"version", LANVANE_VERSION},
                                        {"interval", m_Arguments.interval_s}}));
        else
            m_Terminal.print("lanvanectl " LANVANE_VERSION "\n");
    }

    void tellSnapshot() const {
        const Inventory &inventory = m_Watcher.present();
        if (!m_Arguments.json) {
            m_Terminal.print(listPage(inventory, m_Terminal) + "\n");
            return;
        }
        Json json = inventoryJson(inventory);
        m_Terminal.print(eventLine({{"event", "snapshot"},
                                    {"adapters", json["adapters"]},
                                    {"cameras", json["cameras"]},
                                    {"findings", json["findings"]}}));
    }

    void tellSearch(const std::string &failure) {
        const char *const kind = failure.empty() ? "search-succeeded" : "search-failed";
        if (failure != m_SearchProblem)
            tell(kind + (failure.empty() ? "" : " " + harmless(failure)), eventJson(kind, failure));
        m_SearchProblem = failure;
    }

    void tell(const std::string &text, const Json &json) const {
        m_Terminal.print(m_Arguments.json ? eventLine(json) : timeText(WallClock::now()) + " " + text + "\n");
    }

    /// \returns false when the watch is to end.
    bool waitUntil(Clock::time_point time) const {
        constexpr std::chrono::milliseconds Slice{1000}; // after which a reader that is gone is noticed
        for (Clock::time_point now = Clock::now(); now < time; now = Clock::now()) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(time - now);
            if (isReaderGone() || m_Session.interruption().sleep(std::min(left, Slice)))
                return false;
        }
        return !isReaderGone();
    }

    const Arguments &m_Arguments;
    Session &m_Session;
    const Terminal &m_Terminal;
    Recollection m_Recollection;
    Watcher m_Watcher;
    Measurements m_Measured;
    HostRecollection m_Host;
    bool m_HasSnapshot = false;
    std::string m_SearchProblem;
    std::string m_MetricsProblem;
};

} // namespace

int watch(const Arguments &arguments, Session &session, const Terminal &terminal) {
    return Watch(arguments, session, terminal).run();
}

} // namespace commandline
