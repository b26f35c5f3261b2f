#pragma once

#include "Descriptor.h"

#include <chrono>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace commissioning {

/// A program whose input and output are pipes; it is killed with the object. One thread may read while another closes
/// the input.
class ChildProcess {
public:
    /// \param command the program, which is looked for in PATH unless it has a slash, and its arguments.
    /// \throws std::system_error when it cannot be started.
    explicit ChildProcess(const std::vector<std::string> &command);
    ~ChildProcess();
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;

    void closeInput() { m_Input.reset(); }
    /// Waits for output and appends some to the text. \return false at its end and at the deadline.
    bool read(std::string &text, std::chrono::steady_clock::time_point deadline) const;
    /// Waits for the end of a program that has closed its output. \return its exit status, or -1 when a signal ended
    /// it.
    int wait();

private:
    pid_t m_Process = -1;
    Descriptor m_Input;
    Descriptor m_Output;
};

/// What a program writes, up to 4 MiB; none when it cannot be started, fails, takes longer, or the calling thread is
/// asked to stop.
std::optional<std::string> outputOf(const std::vector<std::string> &command, std::chrono::milliseconds patience);

} // namespace commissioning
