#pragma once

#include "GenApi/IValue.h"

namespace GenApi {

class IString : virtual public IValue {
public:
    /// \throws AccessException when the node is not writable; OutOfRangeException when the text is too long.
    virtual void SetValue(const gcstring &Value, bool Verify = true) = 0;
    IString &operator=(const gcstring &Value) {
        SetValue(Value);
        return *this;
    }
    /// The text up to its first zero byte. \throws AccessException when the node is not readable.
    virtual gcstring GetValue(bool Verify = false, bool IgnoreCache = false) = 0;
    gcstring operator()() { return GetValue(); }
    gcstring operator*() { return GetValue(); }
    /// Longest text that can be set, in bytes.
    virtual int64_t GetMaxLength() = 0;
};

} // namespace GenApi
