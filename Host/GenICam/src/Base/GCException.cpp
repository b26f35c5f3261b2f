#include "Base/GCException.h"

#include <string>

namespace GenICam {

namespace {

std::string TextOrEmpty(const char *text) { return text != nullptr ? text : ""; }

} // namespace

struct GenericException::Texts {
    Texts(const char *aDescription, const char *aSourceFileName, unsigned int aSourceLine, const char *exceptionType)
        : description(TextOrEmpty(aDescription)), sourceFileName(TextOrEmpty(aSourceFileName)), sourceLine(aSourceLine),
          full(description + " (" + TextOrEmpty(exceptionType) + " in " + sourceFileName + ", line " +
               std::to_string(sourceLine) + ")") {}

    std::string description;
    std::string sourceFileName;
    unsigned int sourceLine;
    std::string full;
};

GenericException::GenericException(const char *description, const char *sourceFileName, unsigned int sourceLine,
                                   const char *exceptionType)
    : m_texts(std::make_shared<const Texts>(description, sourceFileName, sourceLine, exceptionType)) {}

const char *GenericException::GetDescription() const noexcept { return m_texts->description.c_str(); }

const char *GenericException::GetSourceFileName() const noexcept { return m_texts->sourceFileName.c_str(); }

unsigned int GenericException::GetSourceLine() const noexcept { return m_texts->sourceLine; }

const char *GenericException::what() const noexcept { return m_texts->full.c_str(); }

} // namespace GenICam
