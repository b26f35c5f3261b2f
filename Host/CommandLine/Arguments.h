#pragma once

#include "commissioning/Inventory.h"

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace commandline {

enum class Command {
    List,
    Show,
    Doctor,
    Set,
    Force,
    Restart,
    Name,
    Rescue,
    PlanExport,
    PlanCheck,
    PlanApply,
    PlanUndo,
    PlanLog,
    Undo,
    Watch,
    Report
};

/// What the user asked for, checked as far as it can be without looking at the network.
struct Arguments {
    Command command = Command::List;

    // Common
    std::vector<std::string> adapters; ///< to which the search is limited; empty for all
    std::vector<commissioning::Address> ask;
    bool json = false;
    bool dryRun = false;
    bool quiet = false;
    bool noColor = false;
    bool yes = false;
    double timeout_s = 60; ///< how long a camera may take to come back

    // Of the command
    std::vector<std::string> cameras;
    std::optional<commissioning::Mode> mode;
    std::optional<commissioning::Address> address;
    std::optional<commissioning::Address> mask;
    std::optional<commissioning::Address> gateway;
    std::string name;
    double interval_s = 30; ///< of a watch
    std::string plan;       ///< file; empty for none, as the next
    std::string metrics;
    std::string file;   ///< of a plan, "-" for standard input or output; or of a report, empty for a name of its own
    std::string undone; ///< id of a plan or change; empty for the last plan
    unsigned maxFailures = 3;  ///< of cameras, that end a plan; 0 for never
    bool rollsBack = true;     ///< what a plan loses
    bool allCameras = false;   ///< for a rescue
    bool replacesFile = false; ///< at an export
    bool redact = false;       ///< a report
    bool isForced = false;     ///< of an undo
};

/// Either what to do, or the exit code of a run that is over: help, version or a mistake.
struct Parsed {
    std::optional<Arguments> arguments;
    int exitCode = 0;
};

/// \param out receives help and version. \param error receives what is wrong; as JSON where that was asked for.
Parsed parseArguments(int argc, const char *const *argv, std::ostream &out, std::ostream &error);

} // namespace commandline
