#pragma once

#include "GenApi/IBase.h"

namespace GenApi {

/// Byte access to a device. Called with the node map's lock held, from whatever thread uses a feature.
class IPort : virtual public IBase {
public:
    /// Reads \p Length bytes; throws a GenICam exception when that fails.
    virtual void Read(void *pBuffer, int64_t Address, int64_t Length) = 0;
    /// Writes \p Length bytes; throws a GenICam exception when that fails.
    virtual void Write(const void *pBuffer, int64_t Address, int64_t Length) = 0;
};

} // namespace GenApi
