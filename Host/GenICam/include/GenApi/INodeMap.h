#pragma once

#include "GenApi/INode.h"
#include "GenApi/IPort.h"
#include "GenApi/Synch.h"

namespace GenApi {

/// The features of one device.
///
/// Made by CNodeMapFactory and destroyed through IDestroy (CNodeMapRef does both). Every operation on the map and on
/// its nodes takes the map's one recursive lock, so any thread may use it; take GetLock() to make several operations
/// one. Callbacks inside the lock run with it held. A node map used by several threads must outlive their operations.
class INodeMap {
public:
    INodeMap(const INodeMap &) = delete;
    INodeMap &operator=(const INodeMap &) = delete;

    virtual void GetNodes(NodeList_t &Nodes) const = 0;
    /// \param Name may carry the prefix "Std::" or "Cust::". \returns null when there is no such node.
    virtual INode *GetNode(const gcstring &Name) const = 0;
    virtual uint64_t GetNumNodes() const = 0;
    /// Drops all cached values and fires the callbacks of all nodes.
    virtual void InvalidateNodes() const = 0;
    /// Binds a port to the port node of that name. The port stays the caller's. \returns false when there is no such
    /// port node.
    virtual bool Connect(IPort *pPort, const gcstring &PortName) const = 0;
    /// Binds a port to the port node "Device".
    virtual bool Connect(IPort *pPort) const = 0;
    virtual gcstring GetDeviceName() const = 0;
    /// Invalidates each node whose polling time has run out. \param ElapsedTime milliseconds since the last call.
    virtual void Poll(int64_t ElapsedTime) = 0;
    virtual CLock &GetLock() const = 0;

protected:
    INodeMap() = default;
    virtual ~INodeMap() = default;
};

} // namespace GenApi
