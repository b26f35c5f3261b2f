#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

/// An empty folder that is removed with the object.
class TestFolder {
public:
    TestFolder() {
        std::string name = std::filesystem::temp_directory_path() / "lanvane-test-XXXXXX";
        m_path = mkdtemp(name.data());
    }
    ~TestFolder() { std::filesystem::remove_all(m_path); }
    TestFolder(const TestFolder &) = delete;
    TestFolder &operator=(const TestFolder &) = delete;

    std::filesystem::path operator/(const char *name) const { return m_path / name; }

    static std::string Read(const std::string &path) {
        std::ostringstream text;
        text << std::ifstream(path).rdbuf();
        return text.str();
    }

private:
    std::filesystem::path m_path;
};
