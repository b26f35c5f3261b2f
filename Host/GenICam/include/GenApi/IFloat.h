#pragma once

#include "GenApi/IValue.h"

namespace GenApi {

class IEnumeration;
class IInteger;

/// A double precision number with limits.
class IFloat : virtual public IValue {
public:
    /// \param Verify check the value against minimum and maximum.
    /// \throws AccessException when the node is not writable; OutOfRangeException.
    virtual void SetValue(double Value, bool Verify = true) = 0;
    IFloat &operator=(double Value) {
        SetValue(Value);
        return *this;
    }
    /// \param Verify check the value read against its limits. \param IgnoreCache read it afresh.
    /// \throws AccessException when the node is not readable; OutOfRangeException.
    virtual double GetValue(bool Verify = false, bool IgnoreCache = false) = 0;
    double operator()() { return GetValue(); }
    double operator*() { return GetValue(); }

    virtual double GetMin() = 0;
    virtual double GetMax() = 0;
    virtual bool HasInc() = 0;
    virtual EIncMode GetIncMode() = 0;
    /// Step between allowed values. \throws LogicalErrorException when HasInc() is false.
    virtual double GetInc() = 0;
    /// The allowed values when GetIncMode() is listIncrement, else empty. \param bounded only those within the limits.
    virtual std::vector<double> GetListOfValidValues(bool bounded = true) = 0;
    virtual ERepresentation GetRepresentation() = 0;
    virtual gcstring GetUnit() = 0;
    virtual EDisplayNotation GetDisplayNotation() = 0;
    /// Digits to show.
    virtual int64_t GetDisplayPrecision() = 0;
    /// The same feature as an integer, or null.
    virtual IInteger *GetIntAlias() = 0;
    /// The same feature as an enumeration, or null.
    virtual IEnumeration *GetEnumAlias() = 0;
    /// Narrows the range from below.
    virtual void ImposeMin(double Value) = 0;
    /// Narrows the range from above.
    virtual void ImposeMax(double Value) = 0;
};

} // namespace GenApi
