#pragma once

#include "NodeImpl.h"

#include <memory>

namespace GenApi {

/// Makes the object for one node of a description.
std::unique_ptr<CNodeImpl> MakeNode(CNodeMapImpl &map, int32_t index, ENodeType type);

} // namespace GenApi
