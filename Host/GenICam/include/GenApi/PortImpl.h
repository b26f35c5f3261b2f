#pragma once

#include "GenApi/INode.h"
#include "GenApi/IPort.h"

namespace GenApi {

/// Base of a program's own port, connected to a node map by INodeMap::Connect. The program implements GetAccessMode,
/// Read and Write.
///
/// A port serves one node map at a time; the later connection counts. Port and node map may be destroyed in any order,
/// but not while the other is in use on another thread. Lock order: the node map's lock comes before any lock of the
/// port, so call InvalidateNode without holding the port's own lock.
class CPortImpl : public IPort {
public:
    CPortImpl() = default;
    ~CPortImpl() override;

    /// The port node this port is connected to, or null.
    INode *GetPortNode() const { return m_pNode; }
    /// Tells the node map that the port's access mode or the device's content changed. Nothing happens while the port
    /// is not connected.
    void InvalidateNode();

private:
    friend class CPortNode;
    class CPortNode *m_pConnection = nullptr;
    INode *m_pNode = nullptr;
};

} // namespace GenApi
