#pragma once

#include "MinimalCorvo/Container.h"
#include "MinimalCorvoGigETL/IGigETransportLayer.h"
#include "commissioning/Findings.h"
#include "commissioning/Search.h"

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace commissioning {

struct DiagnosisOptions {
    /// Told the adapters before the search.
    std::function<void(const std::vector<Adapter> &adapters)> surveyed;
    SearchOptions search;
    /// Watches the host for half a second before the search, so that what its firewall drops all the time is told from
    /// answers of cameras.
    bool measuresQuiet = false;
    /// A path or a name that is looked for in PATH; empty to do without.
    std::string listener = "lanvane-listen";
    std::chrono::milliseconds listenerPatience{100}; ///< for its start; the search begins then in any case
    /// Firewall and connections of an earlier diagnosis count, so that no program of the host is run for them. Null to
    /// ask.
    const Observation *earlier = nullptr;
};

struct Diagnosis {
    Corvo::DeviceInfoList devices; ///< what the search heard
    Observation observation;       ///< adapters and cameras, and what the findings rest on
    std::vector<Finding> findings;
};

/// A search together with what the host knows of it, and what follows from that. The listener runs beside it when it is
/// installed: then cameras whose answers the kernel dropped are among the cameras, marked as hidden.
///
/// Takes as long as a search, and up to half a second longer, as much again to measure, and some seconds on a host
/// whose firewall or NetworkManager does not answer. Any thread may call; several diagnoses at a time count each
/// other's answers. Ends within 300 ms of a stop that is requested by the calling thread's token (Gx::CStopScope).
/// \throws Cancelled, GenericException what the transport layer raises, std::system_error when the kernel tells
/// nothing.
Diagnosis diagnose(Corvo::IGigETransportLayer &layer, const DiagnosisOptions &options = {});

/// The plain values of a diagnosis.
Inventory inventoryOf(const Diagnosis &diagnosis);

} // namespace commissioning
