#pragma once

#include "MinimalCorvoGigETL/ICorvoGigEDevice.h"
#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"
#include "commissioning/Context.h"

#include <cstdint>
#include <optional>
#include <string>

namespace commissioning {

/// The camera that an operation has open, under control of this process. One thread at a time.
class Connection {
public:
    Connection() = default;
    ~Connection();
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    /// Opens a camera for configuration. When it does not answer, a temporary address is asked for, again and again.
    /// \param device tells the MAC: another camera at that address is not it. \param adapter its name; may be empty.
    /// The layer and the interaction of the context must outlive the connection. \returns false when the user gave up
    /// or somebody else controls the camera, who has been told.
    bool open(const Context &context, const Corvo::CQuorelGigEDeviceInfo &device, const std::string &adapter,
              const Corvo::String_t &ipAddress);
    /// Gives the camera's heartbeat timeout back and closes it; nothing when none is open. Never throws.
    void close();

    bool isOpen() const { return m_pDevice != nullptr; }
    Corvo::ICorvoGigEDevice &device() { return *m_pDevice; }

private:
    struct Failure {
        std::string text;
        bool isAccessDenied = false;
    };

    std::optional<Failure> tryOpen(const Context &context, const Corvo::CQuorelGigEDeviceInfo &target);
    void createAndOpen(const Corvo::CQuorelGigEDeviceInfo &target);
    void restoreHeartbeat();

    Corvo::IGigETransportLayer *m_pLayer = nullptr; ///< this and the next of the operation that opened it
    Interaction *m_pInteraction = nullptr;
    Corvo::ICorvoGigEDevice *m_pDevice = nullptr;
    std::optional<std::uint32_t> m_Heartbeat_ms; ///< the camera's, from before
};

} // namespace commissioning
