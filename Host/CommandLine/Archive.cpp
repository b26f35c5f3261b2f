#include "Archive.h"

#include <memory>
#include <stdexcept>
#include <zip.h>

namespace commandline {

namespace {

[[noreturn]] void fail(const zip_error_t *error) {
    throw std::runtime_error(std::string("The zip file cannot be made: ") +
                             zip_error_strerror(const_cast<zip_error_t *>(error)));
}

struct SourceDeleter {
    void operator()(zip_source_t *source) const { zip_source_free(source); }
};
using Source = std::unique_ptr<zip_source_t, SourceDeleter>;

std::string bytesOf(zip_source_t *source) {
    zip_stat_t entry{};
    if (zip_source_stat(source, &entry) != 0 || zip_source_open(source) != 0)
        fail(zip_source_error(source));
    std::string bytes(entry.size, '\0');
    const zip_int64_t count = zip_source_read(source, bytes.data(), bytes.size());
    zip_source_close(source);
    if (count != static_cast<zip_int64_t>(bytes.size()))
        fail(zip_source_error(source));
    return bytes;
}

} // namespace

bool Archive::add(const std::string &name, std::string content) {
    const std::lock_guard<std::mutex> lock(m_Lock);
    if (content.size() > m_Limit - m_Size)
        return false;
    m_Size += content.size();
    m_Files[name] = std::move(content);
    return true;
}

std::string Archive::zip() const {
    zip_error_t error;
    zip_error_init(&error);
    const Source target(zip_source_buffer_create(nullptr, 0, 0, &error));
    zip_t *archive = target ? zip_open_from_source(target.get(), ZIP_TRUNCATE, &error) : nullptr;
    if (!archive)
        fail(&error);
    zip_source_keep(target.get()); // the archive has it, too
    for (const auto &[name, content] : m_Files) {
        zip_source_t *source = zip_source_buffer(archive, content.data(), content.size(), 0);
        if (!source || zip_file_add(archive, name.c_str(), source, ZIP_FL_ENC_UTF_8) < 0) {
            zip_source_free(source);
            error = *zip_get_error(archive);
            zip_discard(archive);
            fail(&error);
        }
    }
    if (zip_close(archive) != 0) {
        error = *zip_get_error(archive);
        zip_discard(archive);
        fail(&error);
    }
    return bytesOf(target.get());
}

} // namespace commandline
