#pragma once

#include "Arguments.h"

#include <functional>
#include <string>

namespace commandline {

/// Standard output and standard error, as people and programs want them. Texts of cameras must have been made harmless,
/// but for the progress.
class Terminal {
public:
    explicit Terminal(const Arguments &arguments);

    /// Columns of standard output; 0 when it is no terminal.
    int width() const { return m_Width; }
    /// Colours a text by severity where there are colours.
    std::string coloured(commissioning::Severity severity, const std::string &text) const;

    /// Writes to standard output, all at once.
    void print(const std::string &text) const;
    /// A remark for people on standard error; not with --quiet.
    void note(const std::string &text) const;
    /// What went wrong, on standard error.
    void complain(const std::string &text) const;
    /// What is going on, in one line that the next one replaces; on a terminal only.
    void progress(const std::string &text) const;
    /// Whether there is somebody to ask.
    static bool canAsk();
    /// Why nothing was done for want of a yes.
    static std::string disagreement();
    /// Asks on the terminal. \param isCancelled polled every 100 ms. \returns false where there is no terminal.
    bool confirms(const std::string &question, const std::function<bool()> &isCancelled) const;

private:
    int m_Width = 0;
    bool m_HasColours = false;
    bool m_IsQuiet;
    bool m_ShowsProgress;
};

} // namespace commandline
