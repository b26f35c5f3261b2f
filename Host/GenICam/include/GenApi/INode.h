#pragma once

#include "GenApi/IBase.h"

namespace GenApi {

class CNodeCallback;
class INodeMap;

/// Identifies a registered callback; 0 is never used.
using CallbackHandleType = std::intptr_t;

/// What every node of a node map has.
class INode : virtual public IBase {
public:
    /// \param FullQualified prefix the name with its name space: "Std::" or "Cust::".
    virtual gcstring GetName(bool FullQualified = false) const = 0;
    virtual ENameSpace GetNameSpace() const = 0;
    virtual EVisibility GetVisibility() const = 0;
    virtual gcstring GetToolTip() const = 0;
    virtual gcstring GetDescription() const = 0;
    /// Falls back to the name.
    virtual gcstring GetDisplayName() const = 0;
    virtual gcstring GetDeviceName() const = 0;
    virtual gcstring GetDocuURL() const = 0;
    /// Hexadecimal event id without prefix; empty when the node has none.
    virtual gcstring GetEventID() const = 0;
    virtual bool IsDeprecated() const = 0;
    virtual bool IsStreamable() const = 0;
    /// True when a category lists the node.
    virtual bool IsFeature() const = 0;
    virtual EInterfaceType GetPrincipalInterfaceType() const = 0;
    virtual INodeMap *GetNodeMap() const = 0;

    /// Drops what this node and the nodes that depend on it keep in their caches, and fires their callbacks.
    virtual void InvalidateNode() = 0;
    /// True when the value may be cached.
    virtual bool IsCachable() const = 0;
    virtual ECachingMode GetCachingMode() const = 0;
    /// Milliseconds after which INodeMap::Poll invalidates the node, or -1 when it is not polled.
    virtual int64_t GetPollingTime() const = 0;

    virtual void GetChildren(NodeList_t &Children, ELinkType LinkType = ctReadingChildren) const = 0;
    /// The nodes that refer to this one.
    virtual void GetParents(NodeList_t &Parents) const = 0;
    /// Node that shows the same value in another form, or null.
    virtual INode *GetAlias() const = 0;
    /// Node of another type with the same value, or null.
    virtual INode *GetCastAlias() const = 0;

    /// Names of the elements and attributes the description gives this node.
    virtual void GetPropertyNames(StringList_t &PropertyNames) const = 0;
    /// Text of one property; values of a repeated element are joined by tabs. \returns false when it is not given.
    virtual bool GetProperty(const gcstring &PropertyName, gcstring &ValueStr, gcstring &AttributeStr) = 0;

    /// Narrows the access mode; RW lifts the restriction again.
    virtual void ImposeAccessMode(EAccessMode ImposedAccessMode) = 0;
    /// Narrows the visibility: the node is shown to fewer users, never to more.
    virtual void ImposeVisibility(EVisibility ImposedVisibility) = 0;

    /// Takes the callback over and calls it whenever the node's value or state may have changed.
    /// \returns a handle that is never used again for another callback.
    virtual CallbackHandleType RegisterCallback(CNodeCallback *pCallback) = 0;
    /// After the return the callback does not run any more, and it has been deleted (when called from the callback
    /// itself: once the operations that call it have ended). \returns false when the handle is not one of this node.
    virtual bool DeregisterCallback(CallbackHandleType hCallback) = 0;
};

} // namespace GenApi
