#pragma once

#include "GenApi/IValue.h"

namespace GenApi {

class ICategory : virtual public IValue {
public:
    /// The features and sub-categories in the order of the file; names that do not exist are left out.
    virtual void GetFeatures(FeatureList_t &Features) const = 0;
};

} // namespace GenApi
