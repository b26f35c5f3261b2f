#pragma once

#include "GenApi/IBase.h"

namespace GenApi {

/// A node that chooses which instance of other features is seen, and the way back.
class ISelector : virtual public IBase {
public:
    virtual bool IsSelector() const = 0;
    virtual void GetSelectedFeatures(FeatureList_t &list) const = 0;
    virtual void GetSelectingFeatures(FeatureList_t &list) const = 0;
};

} // namespace GenApi
