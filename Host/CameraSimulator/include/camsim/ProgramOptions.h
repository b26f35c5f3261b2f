#pragma once

#include "camsim/Scene.h"
#include "camsim/Simulator.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace camsim {

/// A wrong command line; the message names the option and what was expected.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What the command line of `gvcamsim` asks for.
struct ProgramOptions {
    bool help = false;
    bool version = false;
    SimulatorOptions simulator;
    Scene scene; ///< one default camera when none was described

    /// Reads the arguments without the program's name. Throws UsageError.
    static ProgramOptions parse(const std::vector<std::string> &arguments);
    static std::string helpText();
};

} // namespace camsim
