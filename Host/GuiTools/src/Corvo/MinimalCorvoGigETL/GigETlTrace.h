#pragma once

#include "MinimalCorvo/TraceLog.h"

namespace Corvo {

/// The trace category of the GigE transport layer, "Corvo.GigE.TL".
unsigned long GigETlTraceCategory();

/// Hands the protocol library's traces to the category "Corvo.GigE.Gx" from now on: errors and warnings, and its
/// verbose lines too when debug lines of that category are logged at this moment. Can be repeated. Of errors and
/// warnings at most 100 in a second are written, the others counted.
void RouteGxTraces();

} // namespace Corvo
