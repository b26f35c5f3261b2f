#pragma once

#include "NodeImpl.h"
#include "RegisterCache.h"

#include "GenApi/IPort.h"
#include "GenApi/PortImpl.h"

namespace GenApi {

/// A Port node: hands register access on to the port the program connected. Not implemented without one.
class CPortNode : public CNodeImpl, public IPort {
public:
    using CNodeImpl::CNodeImpl;
    ~CPortNode() override;

    EInterfaceType GetPrincipalInterfaceType() const override { return intfIPort; }
    void Read(void *pBuffer, int64_t Address, int64_t Length) override;
    void Write(const void *pBuffer, int64_t Address, int64_t Length) override;

    /// Null disconnects.
    void Connect(IPort *port);
    /// The connected port is being destroyed.
    void Forget();

    // For registers, with the lock held.

    CRegisterCache &Cache() { return m_cache; }
    void ReadBytes(uint8_t *buffer, int64_t address, std::size_t length) const;
    /// Ends all cached lines that overlap.
    void WriteBytes(const uint8_t *buffer, int64_t address, std::size_t length);
    /// True when the device numbers bytes the other way round than the registers say.
    bool SwapsEndianess() const;
    void DropCache() override { m_cache.Clear(); }

protected:
    EAccessMode OwnAccessMode() const override { return m_port != nullptr ? m_port->GetAccessMode() : NI; }

private:
    void Release();

    IPort *m_port = nullptr;
    /// The same port when it wants to know its node.
    CPortImpl *m_portImpl = nullptr;
    CRegisterCache m_cache;
};

} // namespace GenApi
