#pragma once

#include "PlanTask.h"
#include "commissioning/Connection.h"
#include "commissioning/Context.h"

#include <string>

namespace commissioning {

/// What one task is carried out with on a thread of its own: nobody is asked, nothing is shown, failures are kept.
class PlanWorker : private Interaction {
public:
    /// Both must outlive it.
    PlanWorker(Corvo::IGigETransportLayer &layer, const PlanTask &task);

    const Context &context() const { return m_Context; }
    bool wasDenied() const { return m_WasDenied; }
    const std::string &failure() const { return m_Failure; } ///< the last one; empty

private:
    std::shared_ptr<void> begin(Step) override { return nullptr; }
    void pause(std::chrono::milliseconds time) override;
    std::optional<TemporaryAddress> askTemporaryAddress(const AddressQuestion &question) override;
    void rejectTemporaryAddress() override {}
    void accessDenied() override { m_WasDenied = true; }
    void updated(const std::string &, std::optional<Address>) override {}
    void failure(const char *context, const std::exception_ptr &error, const char *attempted) override;

    std::optional<TemporaryAddress> m_Temporary; ///< until it is given out
    Corvo::DeviceInfoList m_Devices;
    Connection m_Connection;
    bool m_WasDenied = false;
    std::string m_Failure;
    Context m_Context;
};

} // namespace commissioning
