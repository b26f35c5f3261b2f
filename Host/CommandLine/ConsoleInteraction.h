#pragma once

#include "Interruption.h"
#include "Terminal.h"
#include "commissioning/Interaction.h"

#include <functional>
#include <stdexcept>

namespace commandline {

/// Ends an operation at a safe point.
class Interrupted : public std::runtime_error {
public:
    Interrupted() : std::runtime_error("interrupted") {}
};

/// Tells how an operation goes and asks nobody: a temporary address is one that is free. Between its steps, and while a
/// camera that has been restarted is waited for, an operation can be ended; not while it writes.
class ConsoleInteraction : public commissioning::Interaction {
public:
    using AddressFinder = std::function<std::optional<commissioning::TemporaryAddress>(const std::string &mac,
                                                                                       const std::string &adapter)>;

    /// \param findAddress a free one, for a camera that takes its settings over a connection only.
    ConsoleInteraction(const Terminal &terminal, Interruption &interruption, AddressFinder findAddress)
        : m_Terminal(terminal), m_Interruption(interruption), m_FindAddress(std::move(findAddress)) {}

    /// Forgets what earlier operations have told. \param mac of the camera to be changed now. \param planned the
    /// address it gets in the end; serves as its temporary one, so that it is right whatever becomes of the rest.
    void start(const std::string &mac, std::optional<commissioning::TemporaryAddress> planned = {});
    /// The temporary address that this operation was given.
    const std::optional<commissioning::TemporaryAddress> &temporaryAddress() const { return m_Temporary; }
    bool wasDenied() const { return m_WasDenied; }
    /// What failed last; empty when nothing did.
    const std::string &lastFailure() const { return m_LastFailure; }

    std::shared_ptr<void> begin(commissioning::Step step) override;
    void pause(std::chrono::milliseconds time) override;
    std::optional<commissioning::TemporaryAddress>
    askTemporaryAddress(const commissioning::AddressQuestion &question) override;
    void rejectTemporaryAddress() override {}
    void accessDenied() override { m_WasDenied = true; }
    void updated(const std::string & /*mac*/, std::optional<commissioning::Address> /*forced*/) override {}
    void failure(const char *context, const std::exception_ptr &error, const char *attempted) override;

private:
    void stopWhenAsked() const;

    const Terminal &m_Terminal;
    Interruption &m_Interruption;
    AddressFinder m_FindAddress;
    std::string m_Mac;
    std::optional<commissioning::TemporaryAddress> m_Planned;
    std::optional<commissioning::TemporaryAddress> m_Temporary;
    bool m_WasDenied = false;
    std::string m_LastFailure;
};

} // namespace commandline
