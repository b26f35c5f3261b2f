#pragma once

namespace commandline {

/// What lanvanectl ends with. Scripts rely on these numbers.
enum ExitCode {
    ExitDone = 0,          ///< done, or already so
    ExitFailed = 1,        ///< something failed
    ExitUsage = 2,         ///< wrong use
    ExitNotFound = 3,      ///< no such camera, or an ambiguous one
    ExitRefused = 4,       ///< nothing was sent: in use, unsafe address, unsupported
    ExitNotConfirmed = 5,  ///< sent, but nobody knows whether it took effect
    ExitSomeFailed = 6,    ///< some of several failed
    ExitFindings = 10,     ///< doctor found warnings or errors
    ExitWouldChange = 11,  ///< a dry run that is not without effect
    ExitInterrupted = 130, ///< by a signal
};

} // namespace commandline
