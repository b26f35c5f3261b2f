#include "Log/CLog.h"

#include "Base/GCFormat.h"
#include "RollingFile.h"

#include <log4cpp/Category.hh>
#include <log4cpp/LayoutAppender.hh>
#include <log4cpp/PatternLayout.hh>
#include <log4cpp/PropertyConfigurator.hh>

#include <unistd.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace GenICam {

namespace {

constexpr std::int64_t TRACE_FILE_MAX_BYTES = std::int64_t{5} * 1024 * 1024;

/// log4cpp's own rolling appender loses lines when two processes share the file. Repeated lines are counted, so that a
/// flood of them does not push all else out of the file. log4cpp serialises the calls.
class SharedFileAppender : public log4cpp::LayoutAppender {
public:
    explicit SharedFileAppender(const std::string &path)
        : LayoutAppender("trace.log"), m_file(path, TRACE_FILE_MAX_BYTES) {}
    ~SharedFileAppender() override { WriteRepetitions(); }
    void close() override {}

protected:
    void _append(const log4cpp::LoggingEvent &event) override {
        const int second = event.timeStamp.getSeconds();
        if (event.message == m_message && event.categoryName == m_category && event.priority == m_priority &&
            second >= m_second && second - m_second < REPETITION_SECONDS) { // the clock may have been set back
            ++m_repetitions;
            return;
        }
        WriteRepetitions();
        m_message = event.message;
        m_category = event.categoryName;
        m_priority = event.priority;
        m_second = second;
        m_file.Append(_getLayout().format(event));
    }

private:
    static constexpr int REPETITION_SECONDS = 60; ///< so that a line that comes now and then keeps its times

    void WriteRepetitions() {
        if (m_repetitions == 0)
            return;
        const std::string text = "last message repeated " + std::to_string(m_repetitions) + " times";
        m_repetitions = 0;
        m_file.Append(_getLayout().format(log4cpp::LoggingEvent(m_category, text, "", m_priority)));
    }

    RollingFile m_file;
    std::string m_message;
    std::string m_category;
    log4cpp::Priority::Value m_priority = log4cpp::Priority::NOTSET;
    int m_second = 0; ///< when it was written
    std::uint64_t m_repetitions = 0;
};

bool IsControl(unsigned char byte) { return byte < 0x20 || byte == 0x7F; }

/// The two bytes of a C1 control character in UTF-8; terminals obey some of these as they do escape sequences.
bool IsWideControl(unsigned char first, unsigned char second) {
    return first == 0xC2 && second >= 0x80 && second <= 0x9F;
}

void BlankControlCharacters(std::string &text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
        text.pop_back();
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (IsControl(byte))
            text[i] = ' ';
        else if (i + 1 < text.size() && IsWideControl(byte, static_cast<unsigned char>(text[i + 1])))
            text[i] = text[i + 1] = ' ';
    }
}

/// Empty when the environment names no usable folder. Relative XDG paths are to be ignored, says their standard.
std::string DefaultLogPath() {
    const char *state = std::getenv("XDG_STATE_HOME");
    if (state != nullptr && state[0] == '/')
        return std::string(state) + "/ostra-lanvane/trace.log";
    const char *home = std::getenv("HOME");
    if (home != nullptr && home[0] == '/')
        return std::string(home) + "/.local/state/ostra-lanvane/trace.log";
    return {};
}

void ConfigureDefault() {
    log4cpp::Category &root = log4cpp::Category::getRoot();
    root.setPriority(log4cpp::Priority::INFO);
    const std::string path = DefaultLogPath();
    if (path.empty())
        return;
    auto layout = std::make_unique<log4cpp::PatternLayout>();
    layout->setConversionPattern("%d{%Y-%m-%d %H:%M:%S.%l} [" + std::to_string(getpid()) + "] %-6p %c: %m%n");
    auto appender = std::make_unique<SharedFileAppender>(path);
    appender->setLayout(layout.release());
    root.addAppender(appender.release());
}

/// \returns why the file cannot be used, or an empty text.
std::string ConfigureFromFile(const char *path) {
    try {
        log4cpp::PropertyConfigurator::configure(path);
        return {};
    } catch (const std::exception &error) {
        return error.what();
    }
}

/// Undoes the set-up as a whole: log4cpp's own shutdown keeps the thresholds that a property file gave to categories.
void Reset() {
    log4cpp::Category::shutdown();
    const std::unique_ptr<std::vector<log4cpp::Category *>> categories(log4cpp::Category::getCurrentCategories());
    for (log4cpp::Category *category : *categories) {
        category->setAdditivity(true);
        if (category->getParent() != nullptr) // the root must have a threshold
            category->setPriority(log4cpp::Priority::NOTSET);
    }
}

/// Guards the set-up and the table of loggers, and with them log4cpp's global state, which it makes on first use.
std::mutex logMutex;

} // namespace

void CLogger::Log(int priority, const char *format, ...) noexcept {
    std::va_list arguments;
    va_start(arguments, format);
    LogVA(priority, format, arguments);
    va_end(arguments);
}

void CLogger::LogVA(int priority, const char *format, std::va_list arguments) noexcept {
    if (!IsEnabled(priority))
        return;
    try {
        std::string text = FormatV(format, arguments);
        BlankControlCharacters(text);
        m_category.log(priority, text); // the std::string form: the other one would expand percent signs once more
    } catch (const std::exception &) {
        // Out of memory: the line is lost, the program goes on.
    }
}

bool CLogger::IsEnabled(int priority) const noexcept { return m_category.isPriorityEnabled(priority); }

void CLog::Initialize() {
    const std::lock_guard<std::mutex> lock(logMutex);
    Reset();
    const char *path = std::getenv("GENICAM_LOG_CONFIG");
    if (path == nullptr || path[0] == '\0') {
        ConfigureDefault();
        return;
    }
    const std::string problem = ConfigureFromFile(path);
    if (problem.empty())
        return;
    Reset(); // drops what was set up before the problem
    ConfigureDefault();
    CLogger(log4cpp::Category::getInstance("GenICam.Log"))
        .Log(LogPriority_Warning, "GENICAM_LOG_CONFIG: cannot use '%s': %s", path, problem.c_str());
}

void CLog::ShutDown() {
    const std::lock_guard<std::mutex> lock(logMutex);
    log4cpp::Category::shutdown();
}

CLogger *CLog::GetLogger(const gcstring &name) {
    static auto &loggers = *new std::map<gcstring, std::unique_ptr<CLogger>>; // never freed: used until the very end
    const std::lock_guard<std::mutex> lock(logMutex);
    std::unique_ptr<CLogger> &logger = loggers[name];
    if (!logger)
        logger.reset(new CLogger(log4cpp::Category::getInstance(name.c_str())));
    return logger.get();
}

} // namespace GenICam
