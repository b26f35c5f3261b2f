#pragma once

/// \file
/// Namespaces of the GenICam layer. The macros let code written against the GenICam standard, which spells its
/// namespaces through them, build unchanged.

#define GENICAM_NAMESPACE GenICam
#define GENAPI_NAMESPACE GenApi

namespace GenICam {}
namespace GenApi {}
