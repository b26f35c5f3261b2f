#include "Terminal.h"

#include "Text.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

using commissioning::Severity;

namespace commandline {

namespace {

constexpr const char *ClearLine = "\r\033[K";

int widthOf(int descriptor) {
    winsize size{};
    return isatty(descriptor) == 1 && ioctl(descriptor, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

bool isSet(const char *variable) {
    const char *value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

} // namespace

Terminal::Terminal(const Arguments &arguments)
    : m_Width(widthOf(STDOUT_FILENO)),
      m_HasColours(isatty(STDOUT_FILENO) == 1 && !arguments.noColor && !isSet("NO_COLOR")), m_IsQuiet(arguments.quiet),
      m_ShowsProgress(isatty(STDERR_FILENO) == 1 && !arguments.quiet) {}

std::string Terminal::coloured(Severity severity, const std::string &text) const {
    if (!m_HasColours || severity == Severity::Info)
        return text;
    return (severity == Severity::Error ? "\033[31m" : "\033[33m") + text + "\033[0m";
}

void Terminal::print(const std::string &text) const {
    progress("");
    std::cout << text << std::flush;
}

void Terminal::note(const std::string &text) const {
    progress("");
    if (!m_IsQuiet)
        std::cerr << text << std::endl;
}

void Terminal::complain(const std::string &text) const {
    progress("");
    std::cerr << "lanvanectl: " << text << std::endl;
}

void Terminal::progress(const std::string &text) const {
    if (m_ShowsProgress)
        std::cerr << ClearLine << harmless(text) << std::flush;
}

bool Terminal::canAsk() { return isatty(STDIN_FILENO) == 1 && isatty(STDERR_FILENO) == 1; }

std::string Terminal::disagreement() {
    return canAsk() ? "Nothing was changed." : "Nothing was changed. Without a terminal to ask on, --yes is needed.";
}

bool Terminal::confirms(const std::string &question, const std::function<bool()> &isCancelled) const {
    if (!canAsk())
        return false;
    progress("");
    std::cerr << question << " [y/N] " << std::flush;
    pollfd input{STDIN_FILENO, POLLIN, 0};
    constexpr int Pause_ms = 100;
    while (poll(&input, 1, Pause_ms) == 0) {
        if (isCancelled())
            return false;
    }
    std::string answer;
    std::getline(std::cin, answer);
    return answer == "y" || answer == "Y" || answer == "yes";
}

} // namespace commandline
