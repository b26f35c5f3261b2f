#pragma once

#include "GenApi/IBase.h"

namespace GenApi {

/// A node with a value that has a text form.
class IValue : virtual public IBase {
public:
    virtual INode *GetNode() = 0;
    /// The value as text. \param Verify also check the value against its limits. \param IgnoreCache read it afresh.
    /// \throws AccessException when the node is not readable; RuntimeException when the value cannot be had.
    virtual gcstring ToString(bool Verify = false, bool IgnoreCache = false) = 0;
    /// Sets the value from text. \param Verify check it against the limits.
    /// \throws AccessException when the node is not writable; InvalidArgumentException when the text is no value of
    /// this node; OutOfRangeException.
    virtual void FromString(const gcstring &ValueStr, bool Verify = true) = 0;
    /// True when reading the value needs no access to the port.
    virtual bool IsValueCacheValid() const = 0;
};

} // namespace GenApi
