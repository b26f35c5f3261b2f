#pragma once

#include "GenApi/IValue.h"

namespace GenApi {

/// A 64-bit integer with limits.
class IInteger : virtual public IValue {
public:
    /// \param Verify check the value against minimum, maximum and increment.
    /// \throws AccessException when the node is not writable; OutOfRangeException.
    virtual void SetValue(int64_t Value, bool Verify = true) = 0;
    IInteger &operator=(int64_t Value) {
        SetValue(Value);
        return *this;
    }
    /// \param Verify check the value read against its limits. \param IgnoreCache read it afresh.
    /// \throws AccessException when the node is not readable; OutOfRangeException.
    virtual int64_t GetValue(bool Verify = false, bool IgnoreCache = false) = 0;
    int64_t operator()() { return GetValue(); }
    int64_t operator*() { return GetValue(); }

    virtual int64_t GetMin() = 0;
    virtual int64_t GetMax() = 0;
    virtual EIncMode GetIncMode() = 0;
    /// Step between allowed values, at least 1.
    virtual int64_t GetInc() = 0;
    /// The allowed values when GetIncMode() is listIncrement, else empty. \param bounded only those within the limits.
    virtual std::vector<int64_t> GetListOfValidValues(bool bounded = true) = 0;
    virtual ERepresentation GetRepresentation() = 0;
    virtual gcstring GetUnit() = 0;
    /// Narrows the range from below.
    virtual void ImposeMin(int64_t Value) = 0;
    /// Narrows the range from above.
    virtual void ImposeMax(int64_t Value) = 0;
};

} // namespace GenApi
