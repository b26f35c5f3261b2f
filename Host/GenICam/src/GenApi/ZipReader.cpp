#include "ZipReader.h"

#include "Text.h"
#include "XmlSource.h"

#include <zip.h>

#include <algorithm>
#include <memory>
#include <optional>

namespace GenApi {

namespace {

constexpr zip_int64_t maxEntries = 64;
// Descriptions shrink to a tenth; deflate could pack a thousand times as much.
constexpr std::size_t maxRatio = 250;
constexpr std::size_t chunkSize = std::size_t{64} * 1024;

struct SErrorText {
    SErrorText() { zip_error_init(&error); }
    ~SErrorText() { zip_error_fini(&error); }
    SErrorText(const SErrorText &) = delete;
    SErrorText &operator=(const SErrorText &) = delete;
    zip_error_t error{};
};

struct SDiscard {
    void operator()(zip_t *archive) const { zip_discard(archive); }
    void operator()(zip_file_t *file) const { zip_fclose(file); }
};
using ArchivePtr = std::unique_ptr<zip_t, SDiscard>;
using FilePtr = std::unique_ptr<zip_file_t, SDiscard>;

[[noreturn]] void Fail(const char *reason) {
    throw RUNTIME_EXCEPTION("Cannot unzip the camera description: %s", reason);
}

ArchivePtr Open(std::string_view bytes) {
    SErrorText status;
    zip_source_t *const source = zip_source_buffer_create(bytes.data(), bytes.size(), 0, &status.error);
    if (source == nullptr)
        Fail(zip_error_strerror(&status.error));
    ArchivePtr archive(zip_open_from_source(source, ZIP_RDONLY, &status.error));
    if (archive == nullptr) {
        zip_source_free(source);
        Fail(zip_error_strerror(&status.error));
    }
    return archive;
}

std::string_view NameOf(zip_t *archive, zip_uint64_t index) {
    const char *const name = zip_get_name(archive, index, 0);
    return name != nullptr ? name : "";
}

bool IsXml(std::string_view name) { return name.size() > 4 && EqualsNoCase(name.substr(name.size() - 4), ".xml"); }
bool IsFolder(std::string_view name) { return !name.empty() && name.back() == '/'; }

/// The first file named as XML, or else the first file.
zip_uint64_t FindDescription(zip_t *archive) {
    const zip_int64_t count = zip_get_num_entries(archive, 0);
    if (count < 1 || count > maxEntries)
        Fail("the archive is empty or has too many files");
    std::optional<zip_uint64_t> firstFile;
    for (zip_uint64_t index = 0; index < static_cast<zip_uint64_t>(count); ++index) {
        const std::string_view name = NameOf(archive, index);
        if (IsXml(name))
            return index;
        if (!firstFile && !IsFolder(name))
            firstFile = index;
    }
    if (!firstFile)
        Fail("the archive has only folders");
    return *firstFile;
}

/// The sizes an archive states may be wrong, so the limit is kept while reading.
std::string ReadAll(zip_file_t *file, std::size_t limit) {
    std::string text;
    for (;;) {
        const std::size_t size = text.size();
        text.resize(size + chunkSize);
        const zip_int64_t got = zip_fread(file, text.data() + size, chunkSize);
        if (got < 0)
            Fail(zip_file_strerror(file));
        text.resize(size + static_cast<std::size_t>(got));
        if (text.size() > limit)
            Fail("it is larger than a description can be");
        if (got == 0)
            return text;
    }
}

/// Some devices fill the memory behind an archive with zeros. Those that may belong to its end record are left.
std::string_view StripZeros(std::string_view bytes) {
    constexpr std::size_t endRecordSize = 22;
    return bytes.substr(0, bytes.find_last_not_of('\0') + 1 + endRecordSize);
}

} // namespace

std::string ReadZippedXml(std::string_view stored) {
    const std::string_view bytes = StripZeros(stored);
    const ArchivePtr archive = Open(bytes);
    const FilePtr file(zip_fopen_index(archive.get(), FindDescription(archive.get()), 0));
    if (file == nullptr)
        Fail(zip_strerror(archive.get()));
    return ReadAll(file.get(), std::min(MaxXmlBytes, maxRatio * bytes.size()));
}

} // namespace GenApi
