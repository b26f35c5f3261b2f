#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

/// An empty folder that is removed with the object.
class LogTestFolder {
public:
    LogTestFolder() {
        std::string name = std::filesystem::temp_directory_path() / "lanvane-log-XXXXXX";
        m_path = mkdtemp(name.data());
    }
    ~LogTestFolder() { std::filesystem::remove_all(m_path); }
    LogTestFolder(const LogTestFolder &) = delete;
    LogTestFolder &operator=(const LogTestFolder &) = delete;

    std::filesystem::path operator/(const char *name) const { return m_path / name; }

    static std::string Read(const std::string &path) {
        std::ostringstream text;
        text << std::ifstream(path).rdbuf();
        return text.str();
    }

private:
    std::filesystem::path m_path;
};
