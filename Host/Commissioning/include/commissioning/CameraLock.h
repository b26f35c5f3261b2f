#pragma once

#include "commissioning/Inventory.h"

#include <set>
#include <stdexcept>
#include <string>

namespace commissioning {

/// Somebody on this host changes the camera already.
class CameraBusy : public std::runtime_error {
public:
    CameraBusy(const std::string &text, Process holder) : std::runtime_error(text), m_Holder(std::move(holder)) {}
    const Process &holder() const { return m_Holder; }

private:
    Process m_Holder;
};

/// The right to change a camera, among the programs of this host (of one network namespace): an abstract Unix socket
/// named by its MAC. It is free as soon as its holder is gone, however that died, and no file stays behind. A program
/// of an older version takes none.
class CameraLock {
public:
    /// \param mac 12 hexadecimal digits in any spelling. \throws CameraBusy, whose text names the process;
    /// std::runtime_error for what is no MAC or when the host lacks descriptors.
    explicit CameraLock(const std::string &mac);
    ~CameraLock();
    CameraLock(const CameraLock &) = delete;
    CameraLock &operator=(const CameraLock &) = delete;

    /// MACs of the cameras that this process has at the moment. Any thread may call.
    static std::set<std::string> held();

private:
    std::string m_Mac;
    int m_Socket;
};

} // namespace commissioning
