#include "MinimalCorvo/TraceLog.h"

#include "Log/CLog.h"

#include <strings.h>

#include <cstring>
#include <exception>
#include <mutex>
#include <utility>

namespace tracelog {

namespace {

constexpr unsigned long MAX_CATEGORIES = 500;
constexpr std::size_t NAME_STORE_BYTES = 15500;

/// A slot without name is free; all slots after it are too.
struct Category {
    const char *name = nullptr;
    GenICam::CLogger *logger = nullptr;
};

// Set up at compile time: other static objects may trace from their constructors. Guarded by traceMutex.
std::mutex traceMutex;
bool enableLogging = false;
Category categories[MAX_CATEGORIES];
char nameStore[NAME_STORE_BYTES];
std::size_t nameStoreUsed = 0;

thread_local LineBudget *usedBudget = nullptr;

GenICam::CLogger *FetchLogger(const char *name) noexcept {
    try {
        return GenICam::CLog::GetLogger(name);
    } catch (const std::exception &) {
        return nullptr;
    }
}

/// The slot that has this name, else the first free one, else MAX_CATEGORIES. Caller holds the mutex.
unsigned long FindSlot(const char *name) {
    unsigned long slot = 0;
    while (slot < MAX_CATEGORIES && categories[slot].name != nullptr && strcasecmp(categories[slot].name, name) != 0)
        ++slot;
    return slot;
}

/// Caller holds the mutex.
unsigned long AddCategory(unsigned long slot, const char *name) {
    const std::size_t size = std::strlen(name) + 1;
    if (size == 1 || size > NAME_STORE_BYTES - nameStoreUsed)
        return INVALID_CATEGORY;
    GenICam::CLogger *logger = FetchLogger(name);
    if (logger == nullptr)
        return INVALID_CATEGORY;
    char *stored = nameStore + nameStoreUsed;
    std::memcpy(stored, name, size);
    nameStoreUsed += size;
    categories[slot] = {stored, logger};
    return slot;
}

/// Null when the category cannot log now.
GenICam::CLogger *LoggerOf(unsigned long id) {
    const std::lock_guard<std::mutex> lock(traceMutex);
    Category &category = categories[id];
    if (!enableLogging || category.name == nullptr)
        return nullptr;
    if (category.logger == nullptr)
        category.logger = FetchLogger(category.name);
    return category.logger;
}

GenICam::LogPriority PriorityOf(unsigned int level) {
    switch (level) {
    case lvDebug:
        return GenICam::LogPriority_Debug;
    case lvInfo:
        return GenICam::LogPriority_Info;
    case lvNotice:
        return GenICam::LogPriority_Notice;
    case lvWarning:
        return GenICam::LogPriority_Warning;
    case lvError:
        return GenICam::LogPriority_Error;
    case lvCritical:
        return GenICam::LogPriority_Critical;
    default:
        return GenICam::LogPriority_NotSet;
    }
}

} // namespace

unsigned long LogGetCatID(const char *name) {
    if (name == nullptr)
        return INVALID_CATEGORY;
    const std::lock_guard<std::mutex> lock(traceMutex);
    if (!enableLogging)
        return INVALID_CATEGORY;
    const unsigned long slot = FindSlot(name);
    if (slot == MAX_CATEGORIES)
        return INVALID_CATEGORY;
    return categories[slot].name != nullptr ? slot : AddCategory(slot, name);
}

bool LogTrace(unsigned long category, unsigned int level, const char *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const bool logged = LogTraceVA(category, level, format, arguments);
    va_end(arguments);
    return logged;
}

bool LogTraceVA(unsigned long category, unsigned int level, const char *format, std::va_list arguments) {
    if (category >= MAX_CATEGORIES || format == nullptr)
        return false;
    GenICam::CLogger *logger = LoggerOf(category);
    if (logger == nullptr)
        return false;
    const GenICam::LogPriority priority = PriorityOf(level);
    if (usedBudget != nullptr && logger->IsEnabled(priority) && !usedBudget->Take())
        return false;
    logger->LogVA(priority, format, arguments); // outside the mutex: loggers may be slow
    return true;
}

LineBudget::~LineBudget() {
    if (m_taken > m_lines)
        LogTrace(m_category, lvWarning, "%lu further lines were left out.", m_taken - m_lines);
}

LineBudget::Use::Use(LineBudget &budget) : m_before(std::exchange(usedBudget, &budget)) {}

LineBudget::Use::~Use() { usedBudget = m_before; }

bool LogEnable(bool enable) {
    const std::lock_guard<std::mutex> lock(traceMutex);
    enableLogging = enable;
    if (!enable) {
        for (Category &category : categories)
            category.logger = nullptr;
    }
    return true;
}

} // namespace tracelog
