#pragma once

/// \file
/// Everything of GenApi.

#include "GenApi/IDestroy.h"
#include "GenApi/NodeCallback.h"
#include "GenApi/NodeMapFactory.h"
#include "GenApi/NodeMapRef.h"
#include "GenApi/Pointer.h"
#include "GenApi/PortImpl.h"
