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

    /// Has the logging library write all lines, as "PRIORITY CATEGORY TEXT", to the file "log" in here from its start
    /// on.
    void TakeLog() const {
        const std::string config = *this / "log.properties";
        std::ofstream(config) << "log4j.rootCategory=DEBUG, A\nlog4j.appender.A=org.apache.log4j.FileAppender\n"
                                 "log4j.appender.A.layout=org.apache.log4j.PatternLayout\n"
                                 "log4j.appender.A.layout.ConversionPattern=%p %c %m%n\nlog4j.appender.A.fileName="
                              << (*this / "log").string() << '\n';
        setenv("GENICAM_LOG_CONFIG", config.c_str(), 1);
    }
    /// Has it write to its usual file, in here.
    void TakeDefaultLog() const {
        setenv("XDG_STATE_HOME", m_path.c_str(), 1);
        unsetenv("GENICAM_LOG_CONFIG");
    }
    std::string DefaultLog() const { return Read(*this / "ostra-lanvane/trace.log"); }
    static std::string Read(const std::string &path) {
        std::ostringstream text;
        text << std::ifstream(path).rdbuf();
        return text.str();
    }

private:
    std::filesystem::path m_path;
};
