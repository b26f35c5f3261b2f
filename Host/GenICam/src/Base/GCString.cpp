#include "Base/GCString.h"

#include "Base/GCException.h"

#include <istream>
#include <ostream>

namespace GenICam {

gcstring &gcstring::append(const gcstring &text) {
    m_text.append(text.m_text);
    return *this;
}

gcstring &gcstring::append(std::size_t count, char ch) {
    m_text.append(count, ch);
    return *this;
}

std::size_t gcstring::find(const gcstring &text, std::size_t offset) const noexcept {
    return m_text.find(text.m_text, offset);
}

std::size_t gcstring::find(const gcstring &text, std::size_t offset, std::size_t count) const {
    return m_text.find(text.m_text.substr(0, count), offset);
}

std::size_t gcstring::find_first_of(const gcstring &characters, std::size_t offset) const noexcept {
    return m_text.find_first_of(characters.m_text, offset);
}

std::size_t gcstring::find_first_not_of(const gcstring &characters, std::size_t offset) const noexcept {
    return m_text.find_first_not_of(characters.m_text, offset);
}

gcstring gcstring::substr(std::size_t offset, std::size_t count) const {
    if (offset > m_text.size())
        throw OUT_OF_RANGE_EXCEPTION("Offset %zu is beyond the end of a text of %zu characters", offset, m_text.size());
    return m_text.substr(offset, count);
}

std::ostream &operator<<(std::ostream &stream, const gcstring &text) {
    return stream.write(text.c_str(), static_cast<std::streamsize>(text.size()));
}

std::istream &operator>>(std::istream &stream, gcstring &text) {
    std::string word;
    stream >> word;
    text = std::move(word);
    return stream;
}

std::istream &getline(std::istream &stream, gcstring &line) {
    std::string text;
    std::getline(stream, text);
    line = std::move(text);
    return stream;
}

} // namespace GenICam
