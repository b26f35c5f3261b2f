#pragma once

#include "commissioning/Diagnosis.h"

#include <chrono>
#include <map>
#include <optional>
#include <string>

namespace commissioning {

/// What was found out by asking cameras, for searches that follow each other: a camera is asked when it is new, has
/// changed or could not be reached, and otherwise once a minute; one that changes all the time every ten seconds, one
/// that cannot be reached twice a minute at most. Used by one search at a time.
class Recollection {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// Makes a search use and fill it. It must outlive the search. What the options were told to call is still called.
    /// \param now when the search begins.
    void attach(SearchOptions *pOptions, Time now);

private:
    struct Known {
        std::string signature; ///< what the discovery told
        Time asked;
        std::optional<Time> changed; ///< when it was last asked ahead of time
        Corvo::CDeviceInfo device;   ///< with what was found out
    };

    bool recall(Corvo::CDeviceInfo &device);
    void learn(const Corvo::CDeviceInfo &device);

    Time m_Now;
    std::map<std::string, Known> m_Known; ///< by MAC; of the last minute
};

/// What the programs of the host tell of its firewall and connections, for searches that follow each other: they are
/// run once a minute. Used by one search at a time.
class HostRecollection {
public:
    /// Makes a search use what is known. It must outlive the search. \param now when the search begins.
    void attach(DiagnosisOptions *pOptions, Recollection::Time now);
    /// After the search.
    void learn(const Observation &seen);
    void forget() { m_Asked.reset(); }

private:
    Recollection::Time m_Now;
    std::optional<Recollection::Time> m_Asked;
    Observation m_Host; ///< what the programs told, and nothing else
};

/// When the round after \p now begins of those that began at \p first and are an interval apart: always in the future,
/// so that rounds which take too long are left out and the others do not drift.
Recollection::Time nextRound(Recollection::Time first, std::chrono::steady_clock::duration interval,
                             Recollection::Time now);

} // namespace commissioning
