#pragma once

#include "GenApi/IValue.h"

namespace GenApi {

class IBoolean : virtual public IValue {
public:
    /// \throws AccessException when the node is not writable.
    virtual void SetValue(bool Value, bool Verify = true) = 0;
    IBoolean &operator=(bool Value) {
        SetValue(Value);
        return *this;
    }
    /// True when the underlying value is the node's OnValue.
    /// \throws AccessException when the node is not readable.
    virtual bool GetValue(bool Verify = false, bool IgnoreCache = false) const = 0;
    bool operator()() const { return GetValue(); }
};

} // namespace GenApi
