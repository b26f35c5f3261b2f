#pragma once

#include "Base/GCFormat.h"
#include "Base/GCNamespace.h"

#include <exception>
#include <memory>

namespace GenICam {

/// Base of every exception of the GenICam layer and of the layers above it. Copying never throws.
class GenericException : public std::exception {
public:
    /// The texts are copied; a null text counts as empty. \param sourceLine one-based line in \p sourceFileName.
    GenericException(const char *description, const char *sourceFileName, unsigned int sourceLine,
                     const char *exceptionType = "GenericException");

    /// What happened, in words for the user.
    const char *GetDescription() const noexcept;
    /// Source file that threw, as the compiler names it.
    const char *GetSourceFileName() const noexcept;
    unsigned int GetSourceLine() const noexcept;
    /// Description, exception type, source file and line in one text.
    const char *what() const noexcept override;

private:
    struct Texts;
    std::shared_ptr<const Texts> m_texts;
};

/// Memory could not be allocated.
class BadAllocException : public GenericException {
public:
    BadAllocException(const char *description, const char *sourceFileName, unsigned int sourceLine)
        : GenericException(description, sourceFileName, sourceLine, "BadAllocException") {}
};

/// An argument is not acceptable.
class InvalidArgumentException : public GenericException {
public:
    InvalidArgumentException(const char *description, const char *sourceFileName, unsigned int sourceLine)
        : GenericException(description, sourceFileName, sourceLine, "InvalidArgumentException") {}
};

/// An argument or a value lies outside its range.
class OutOfRangeException : public GenericException {
public:
    OutOfRangeException(const char *description, const char *sourceFileName, unsigned int sourceLine)
        : GenericException(description, sourceFileName, sourceLine, "OutOfRangeException") {}
};

/// A node's property is wrong or missing.
class PropertyException : public GenericException {
public:
    PropertyException(const char *description, const char *sourceFileName, unsigned int sourceLine)
        : GenericException(description, sourceFileName, sourceLine, "PropertyException") {}
};

/// Something failed that the program could not foresee: a device, the network, a file.
class RuntimeException : public GenericException {
public:
    RuntimeException(const char *description, const char *sourceFileName, unsigned int sourceLine)
        : GenericException(description, sourceFileName, sourceLine, "RuntimeException") {}
};

/// The program used an object in a way its state does not allow.
class LogicalErrorException : public GenericException {
public:
    LogicalErrorException(const char *description, const char *sourceFileName, unsigned int sourceLine)
        : GenericException(description, sourceFileName, sourceLine, "LogicalErrorException") {}
};

/// A node or port was accessed against its access mode.
class AccessException : public GenericException {
public:
    AccessException(const char *description, const char *sourceFileName, unsigned int sourceLine)
        : GenericException(description, sourceFileName, sourceLine, "AccessException") {}
};

/// Something did not happen in time.
class TimeoutException : public GenericException {
public:
    TimeoutException(const char *description, const char *sourceFileName, unsigned int sourceLine)
        : GenericException(description, sourceFileName, sourceLine, "TimeoutException") {}
};

/// An object does not have the interface asked for.
class DynamicCastException : public GenericException {
public:
    DynamicCastException(const char *description, const char *sourceFileName, unsigned int sourceLine)
        : GenericException(description, sourceFileName, sourceLine, "DynamicCastException") {}
};

/// Makes an exception of one type for one source position; used through the macros below.
template <class Exception> class ExceptionReporter {
public:
    ExceptionReporter(const char *sourceFileName, unsigned int sourceLine)
        : m_sourceFileName(sourceFileName), m_sourceLine(sourceLine) {}

    /// The exception with a printf-formatted description; the caller throws it.
    [[gnu::format(printf, 2, 3)]] Exception Report(const char *format, ...) const {
        std::va_list arguments;
        va_start(arguments, format);
        const std::string description = FormatV(format, arguments);
        va_end(arguments);
        return Exception(description.c_str(), m_sourceFileName, m_sourceLine);
    }

private:
    const char *m_sourceFileName;
    unsigned int m_sourceLine;
};

} // namespace GenICam

/// Usage: `throw RUNTIME_EXCEPTION("Cannot open '%s'", name);` with printf formats that the compiler checks.
#define GENICAM_EXCEPTION_REPORT(type) ::GenICam::ExceptionReporter<::GenICam::type>(__FILE__, __LINE__).Report
#define GENERIC_EXCEPTION GENICAM_EXCEPTION_REPORT(GenericException)
#define BAD_ALLOC_EXCEPTION GENICAM_EXCEPTION_REPORT(BadAllocException)
#define INVALID_ARGUMENT_EXCEPTION GENICAM_EXCEPTION_REPORT(InvalidArgumentException)
#define OUT_OF_RANGE_EXCEPTION GENICAM_EXCEPTION_REPORT(OutOfRangeException)
#define PROPERTY_EXCEPTION GENICAM_EXCEPTION_REPORT(PropertyException)
#define RUNTIME_EXCEPTION GENICAM_EXCEPTION_REPORT(RuntimeException)
#define LOGICAL_ERROR_EXCEPTION GENICAM_EXCEPTION_REPORT(LogicalErrorException)
#define ACCESS_EXCEPTION GENICAM_EXCEPTION_REPORT(AccessException)
#define TIMEOUT_EXCEPTION GENICAM_EXCEPTION_REPORT(TimeoutException)
#define DYNAMICCAST_EXCEPTION GENICAM_EXCEPTION_REPORT(DynamicCastException)
