#pragma once

#include "MinimalCorvo/Container.h"
#include "MinimalCorvo/TraceLog.h"
#include "MinimalCorvoGigETL/IGigETransportLayer.h"
#include "commissioning/Interaction.h"
#include "commissioning/Tracer.h"

#include <chrono>

namespace commissioning {

class Connection;
class Journal;
class Undertaking;

/// How long a camera may take to come back after its IP cycle was restarted.
struct RediscoveryPatience {
    int rounds = 30;
    std::chrono::milliseconds pause{2000}; ///< before each round
    int restarts = 3; ///< of a camera that comes back without what was asked for, besides the first
};

/// What every operation works with. Nothing is owned; all of it outlives the operation.
struct Context {
    Corvo::IGigETransportLayer &layer;
    Corvo::DeviceInfoList &devices; ///< what is known; kept up to date, used by nobody else meanwhile
    Connection &connection;         ///< open only during an operation
    Interaction &interaction;
    Tracer trace{tracelog::INVALID_CATEGORY};
    RediscoveryPatience patience;
    /// Of what is changed: each operation is one undertaking then. Null for none, as in tests; nothing is locked then.
    Journal *journal = nullptr;
    const Undertaking *undertaking = nullptr; ///< what this is a step of, which has the camera's lock; null for none

    /// Runs a part of an operation and hands what it throws to the interaction. \returns false then.
    template <class Work> bool guarded(const char *context, Work work, const char *attempted = nullptr) const {
        try {
            return work();
        } catch (...) {
            interaction.failure(context, std::current_exception(), attempted);
            return false;
        }
    }
};

} // namespace commissioning
