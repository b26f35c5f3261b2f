#pragma once

#include "GenApi/IValue.h"

namespace GenApi {

class IEnumEntry : virtual public IValue {
public:
    virtual int64_t GetValue() = 0;
    virtual gcstring GetSymbolic() const = 0;
    /// The number the entry stands for; its value when none is given.
    virtual double GetNumericValue() = 0;
    virtual bool IsSelfClearing() = 0;
};

} // namespace GenApi
