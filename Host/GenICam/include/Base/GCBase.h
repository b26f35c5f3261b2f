#pragma once

/// \file
/// Everything of the GenICam base: strings, string lists, exceptions.

#include "Base/GCException.h"
#include "Base/GCNamespace.h"
#include "Base/GCString.h"
#include "Base/GCStringVector.h"
