// So that the texts of the protocol library's traces are made, too.

#include "gxapi/Trace.h"

namespace {

const struct Traces {
    Traces() {
        Gx::Trace::SetSink([](void *, std::uint32_t, std::uint32_t, const char *) {}, nullptr, Gx::Trace::FlagAll,
                           Gx::Trace::LevelMostVerbose);
    }
} traces;

} // namespace
