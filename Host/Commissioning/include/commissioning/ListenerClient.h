#pragma once

#include "commissioning/Inventory.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace commissioning {

/// An acknowledge to a discovery that a packet socket saw, whatever became of it afterwards.
struct SeenAcknowledge {
    std::string adapter;
    std::chrono::steady_clock::time_point time; ///< when it was seen
    Address sender = 0;                         ///< as in the IP header
    Camera camera; ///< as the acknowledge describes it; its adapters are empty and its status is unknown
};

struct ListenerReport {
    enum class State {
        Absent, ///< not installed
        Denied, ///< installed, but without its capability
        Heard   ///< listened on at least one adapter
    };

    State state = State::Absent;
    std::string program;               ///< its path where it was denied; "setcap cap_net_raw=p PATH" grants it
    std::vector<std::string> adapters; ///< those it listened on
    std::vector<SeenAcknowledge> seen; ///< each camera once per adapter and address, in the order seen
    std::uint64_t dropped = 0;         ///< datagrams that it could not take in time
};

/// Takes the lines of lanvane-listen (see its manual page) apart. Whatever does not have their form is skipped, and so
/// is what goes beyond 16,384 acknowledges.
class ListenerLines {
public:
    /// \param text what was read next; lines may be cut anywhere.
    void add(std::string_view text);
    const ListenerReport &report() const { return m_Report; }
    /// How many adapters it has told of: that it listens there, or cannot.
    std::size_t settled() const { return m_Settled; }

private:
    void takeLine(std::string_view line);
    void takeAcknowledge(std::string_view words);

    ListenerReport m_Report;
    std::set<std::string> m_Known; ///< what an acknowledge that is no news begins with
    std::string m_Rest;
    bool m_IsSkipping = false;
    std::size_t m_Settled = 0;
};

/// Runs lanvane-listen beside a search, if it is installed, and gathers on a thread of its own what it sees.
class ListenerClient {
public:
    /// \param adapters names of those to listen on. \param program a path, or a name that is looked for in PATH.
    explicit ListenerClient(const std::vector<std::string> &adapters, const std::string &program = "lanvane-listen");
    /// Ends the program.
    ~ListenerClient();

    /// Waits until it listens on each adapter or has said that it cannot, but not longer than this.
    void waitUntilReady(std::chrono::milliseconds patience) const;
    /// Ends the program, which takes 500 ms at most. \return what it saw; to be called once.
    ListenerReport finish();

private:
    class Running;
    std::unique_ptr<Running> m_Running; ///< null when it could not be started
};

/// The cameras that nobody but the listener heard, marked as hidden, under the adapters it saw them on.
///
/// \param cameras those the search heard. \param end of the search: what arrives later nobody waits for.
std::vector<Camera> hiddenCameras(const ListenerReport &report, const std::vector<Camera> &cameras,
                                  std::chrono::steady_clock::time_point end);

} // namespace commissioning
