#pragma once

#include "GenApi/IValue.h"

namespace GenApi {

/// The bytes of a register as they stand behind the port.
class IRegister : virtual public IValue {
public:
    /// Writes the whole register. \param Length bytes in the buffer, equal to GetLength().
    /// \throws AccessException when the node is not writable; OutOfRangeException on a wrong length.
    virtual void Set(const uint8_t *pBuffer, int64_t Length, bool Verify = true) = 0;
    /// Reads the whole register. \param Length room in the buffer, at least GetLength().
    /// \throws AccessException when the node is not readable; OutOfRangeException on a short buffer.
    virtual void Get(uint8_t *pBuffer, int64_t Length, bool Verify = false, bool IgnoreCache = false) = 0;
    /// In bytes.
    virtual int64_t GetLength() = 0;
    virtual int64_t GetAddress() = 0;
};

} // namespace GenApi
