#pragma once

#include "GenApi/INode.h"

#include <utility>

namespace GenApi {

/// A callback of one node.
///
/// Fires when the node's value or state may have changed: after a write to it, to a node it depends on, after an
/// invalidation, a poll or an imposed access mode; at most once per outermost operation, which spans everything that
/// callbacks do in the same node map. An exception that leaves a callback is traced and dropped; the others still run.
/// "Outside the lock" means without the operation's own hold on it; what the caller holds himself stays held.
/// A callback outside the lock must not be deregistered by a thread that holds a lock the callback takes, and it may
/// run on several threads at once.
class CNodeCallback {
public:
    CNodeCallback(INode *pNode, ECallbackType callbackType) : m_pNode(pNode), m_callbackType(callbackType) {}
    virtual ~CNodeCallback() = default;
    CNodeCallback(const CNodeCallback &) = delete;
    CNodeCallback &operator=(const CNodeCallback &) = delete;

    virtual void operator()() const = 0;
    INode *GetNode() const { return m_pNode; }
    ECallbackType GetCallbackType() const { return m_callbackType; }

private:
    INode *m_pNode;
    ECallbackType m_callbackType;
};

/// Calls anything that can be called with an INode*.
template <class Function> class CFunctionNodeCallback : public CNodeCallback {
public:
    CFunctionNodeCallback(INode *pNode, Function function, ECallbackType callbackType)
        : CNodeCallback(pNode, callbackType), m_function(std::move(function)) {}
    void operator()() const override { m_function(GetNode()); }

private:
    // A function object may change itself when called.
    mutable Function m_function;
};

/// Calls a member function of a client that must outlive the registration.
template <class Client, class Member> class CMemberNodeCallback : public CNodeCallback {
public:
    CMemberNodeCallback(INode *pNode, Client &client, Member member, ECallbackType callbackType)
        : CNodeCallback(pNode, callbackType), m_client(client), m_member(member) {}
    void operator()() const override { (m_client.*m_member)(GetNode()); }

private:
    Client &m_client;
    Member m_member;
};

/// A callback to be handed to INode::RegisterCallback, which takes it over.
template <class Function>
CNodeCallback *make_NodeCallback(INode *pNode, Function function, ECallbackType callbackType = cbPostInsideLock) {
    return new CFunctionNodeCallback<Function>(pNode, std::move(function), callbackType);
}

template <class Client, class Member>
CNodeCallback *make_NodeCallback(INode *pNode, Client &client, Member member,
                                 ECallbackType callbackType = cbPostInsideLock) {
    return new CMemberNodeCallback<Client, Member>(pNode, client, member, callbackType);
}

/// Registers a function or function object that is called with the node. \returns the handle for Deregister.
template <class Function>
CallbackHandleType Register(INode *pNode, Function function, ECallbackType callbackType = cbPostInsideLock) {
    return pNode->RegisterCallback(make_NodeCallback(pNode, std::move(function), callbackType));
}

/// Registers a member function of \p client that is called with the node. \returns the handle for Deregister.
template <class Client, class Member>
CallbackHandleType Register(INode *pNode, Client &client, Member member,
                            ECallbackType callbackType = cbPostInsideLock) {
    return pNode->RegisterCallback(make_NodeCallback(pNode, client, member, callbackType));
}

/// Ends a registration, see INode::DeregisterCallback. \returns false when the handle is not (or no longer) registered.
bool Deregister(CallbackHandleType hCallback);

} // namespace GenApi
