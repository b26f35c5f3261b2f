#pragma once

namespace commandline {

/// The whole program. \returns its exit code.
int run(int argc, const char *const *argv);

} // namespace commandline
