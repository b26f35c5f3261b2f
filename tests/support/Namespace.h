#pragma once

#include <functional>
#include <string>

namespace testnet {

/// Moves the process into a user and network namespace of its own, where it may do what it likes; works for root and
/// for ordinary users. Call before any thread is started. Returns an empty text or why it cannot be done.
std::string enterPrivateNetwork();

/// Runs `ip` with the given arguments in the process's own network namespace. Throws when it fails.
void ip(const std::string &arguments);

/// A network namespace, held open by a descriptor and gone with it.
class Namespace {
public:
    Namespace();
    ~Namespace();
    Namespace(const Namespace &) = delete;
    Namespace &operator=(const Namespace &) = delete;

    int descriptor() const { return m_Descriptor; }
    /// Runs a function inside, on a thread of its own; a socket it opens stays there.
    void run(const std::function<void()> &work) const;
    /// Runs `ip` inside.
    void ip(const std::string &arguments) const;

private:
    int m_Descriptor = -1;
};

/// A host adapter: a veth pair whose other end, named "cam", stands in a namespace of its own.
class Adapter {
public:
    /// \param address "192.168.1.5/24", or empty for an adapter without IPv4 address.
    Adapter(const std::string &name, const std::string &address);
    ~Adapter();
    Adapter(const Adapter &) = delete;
    Adapter &operator=(const Adapter &) = delete;

    const std::string &name() const { return m_Name; }
    const Namespace &cameraSide() const { return m_CameraSide; }
    static constexpr const char *CameraInterface = "cam";

private:
    std::string m_Name;
    Namespace m_CameraSide;
};

} // namespace testnet
