#include "PortNode.h"

#include "NodeMapImpl.h"
#include "Text.h"

namespace GenApi {

CPortNode::~CPortNode() { Release(); }

void CPortNode::Read(void *pBuffer, int64_t Address, int64_t Length) {
    const AutoLock lock(Map().GetLock());
    if (Length > 0)
        ReadBytes(static_cast<uint8_t *>(pBuffer), Address, static_cast<std::size_t>(Length));
}

void CPortNode::Write(const void *pBuffer, int64_t Address, int64_t Length) {
    const AutoLock lock(Map().GetLock());
    if (Length > 0)
        WriteBytes(static_cast<const uint8_t *>(pBuffer), Address, static_cast<std::size_t>(Length));
}

void CPortNode::Connect(IPort *port) {
    auto *const portImpl = dynamic_cast<CPortImpl *>(port);
    if (portImpl != nullptr && portImpl->m_pConnection != nullptr && portImpl->m_pConnection != this)
        portImpl->m_pConnection->Connect(nullptr);
    {
        const AutoLock lock(Map().GetLock());
        Release();
        m_port = port;
        m_portImpl = portImpl;
        if (portImpl != nullptr) {
            portImpl->m_pConnection = this;
            portImpl->m_pNode = this;
        }
    }
    InvalidateNode();
}

void CPortNode::Release() {
    if (m_portImpl != nullptr) {
        m_portImpl->m_pConnection = nullptr;
        m_portImpl->m_pNode = nullptr;
    }
    Forget();
}

void CPortNode::Forget() {
    const AutoLock lock(Map().GetLock());
    m_port = nullptr;
    m_portImpl = nullptr;
}

void CPortNode::ReadBytes(uint8_t *buffer, int64_t address, std::size_t length) const {
    CheckReadable();
    m_port->Read(buffer, address, static_cast<int64_t>(length));
}

void CPortNode::WriteBytes(const uint8_t *buffer, int64_t address, std::size_t length) {
    CheckWritable();
    // Before the write: when it fails nobody knows what the device holds.
    m_cache.DropOverlapping(address, length);
    m_port->Write(buffer, address, static_cast<int64_t>(length));
}

bool CPortNode::SwapsEndianess() const { return IsYes(Text(EProperty::SwapEndianess)); }

CPortImpl::~CPortImpl() {
    if (m_pConnection != nullptr)
        m_pConnection->Forget();
}

void CPortImpl::InvalidateNode() {
    if (m_pNode != nullptr)
        m_pNode->InvalidateNode();
}

} // namespace GenApi
