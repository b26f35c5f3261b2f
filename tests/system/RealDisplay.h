#pragma once

#include "support/Leaks.h"
#include "support/TestFolder.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <spawn.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

/// A program in the background, ended with the object.
class Program {
public:
    explicit Program(std::vector<std::string> arguments) {
        std::vector<char *> argv;
        for (std::string &argument : arguments)
            argv.push_back(argument.data());
        argv.push_back(nullptr);
        if (posix_spawnp(&m_Id, argv[0], nullptr, nullptr, argv.data(), environ) != 0)
            throw std::runtime_error("cannot start " + arguments[0]);
    }
    ~Program() {
        if (m_Id != 0)
            end(SIGKILL);
    }
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    /// \returns how it ended, as waitpid tells.
    int end(int signal) {
        int status = 0;
        kill(m_Id, signal);
        waitpid(m_Id, &status, 0);
        m_Id = 0;
        return status;
    }

private:
    pid_t m_Id = 0;
};

/// An X server that nobody sees, with a window manager; programs started from now on are its clients.
class RealDisplay {
public:
    static constexpr const char *Needs = "needs Xvfb, openbox, xdotool and weston";
    static bool isThere() { return system("command -v Xvfb openbox xdotool weston >/dev/null") == 0; }
    static bool mustBeThere() {
        const char *ci = getenv("CI");
        return ci != nullptr && strcmp(ci, "true") == 0;
    }

    RealDisplay() {
        for (const char *folder : {"HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"})
            setenv(folder, (m_Folder / "home").c_str(), 1);
        setenv("QT_QPA_PLATFORM", "xcb", 1);
        setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1); // else its library looks for one, and leaks
        const std::string file = m_Folder / "display";
        m_Server.emplace(std::vector<std::string>{
            "sh", "-c", "exec Xvfb -displayfd 3 -screen 0 1024x600x24 -nolisten tcp 3>" + file});
        if (!eventually([&] { return TestFolder::Read(file).find('\n') != std::string::npos; }, 20000))
            throw std::runtime_error("the X server does not start");
        setenv("DISPLAY", (":" + std::to_string(std::stoi(TestFolder::Read(file)))).c_str(), 1);
        m_Manager.emplace(std::vector<std::string>{"openbox"});
    }

    /// \returns whether it did what it was asked for.
    static bool xdotool(const std::string &command) { return system(("timeout 10 xdotool " + command).c_str()) == 0; }

private:
    TestFolder m_Folder;
    std::optional<Program> m_Server, m_Manager;
};
