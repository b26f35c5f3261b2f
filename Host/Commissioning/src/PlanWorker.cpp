#include "PlanWorker.h"

#include "MinimalCorvo/TraceLog.h"

#include <thread>
#include <utility>

namespace commissioning {

namespace {

/// For a camera to be heard at a temporary address, which it has at once.
constexpr RediscoveryPatience TemporaryPatience{6, std::chrono::milliseconds(300), 1};

} // namespace

PlanWorker::PlanWorker(Corvo::IGigETransportLayer &layer, const PlanTask &task)
    : m_Temporary(task.temporary), m_Context{layer,
                                             m_Devices,
                                             m_Connection,
                                             *this,
                                             Tracer(tracelog::LogGetCatID("Lanvane.Plan")),
                                             TemporaryPatience,
                                             task.journal,
                                             task.undertaking} {
    m_Devices.push_back(task.change.device);
}

void PlanWorker::pause(std::chrono::milliseconds time) { std::this_thread::sleep_for(time); }

std::optional<TemporaryAddress> PlanWorker::askTemporaryAddress(const AddressQuestion &) {
    return std::exchange(m_Temporary, std::nullopt);
}

void PlanWorker::failure(const char *, const std::exception_ptr &error, const char *) {
    m_Failure = failureText(error);
}

} // namespace commissioning
