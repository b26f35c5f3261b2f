#include "MinimalCorvo/Utilities.h"

#include "Base/GCException.h"

#include <boost/filesystem.hpp>

#include <dlfcn.h>
#include <link.h>

#include <cstring>

namespace Corvo {

namespace {

namespace fs = boost::filesystem;

constexpr std::size_t PATH_BUFFER_BYTES = 4096;

/// A path once worked out; callers keep pointers to the text.
struct PathBuffer {
    PathBuffer(const String_t &path, const char *tooLongText) {
        if (path.size() >= sizeof text)
            throw RUNTIME_EXCEPTION("%s", tooLongText);
        std::memcpy(text, path.c_str(), path.size() + 1);
    }

    char text[PATH_BUFFER_BYTES];
};

/// The loader names the program by argv[0], which may be relative or found through PATH, and everything else by path.
fs::path FileOfThisCode() {
    Dl_info info{};
    void *extra = nullptr;
    fs::path file;
    boost::system::error_code ignored;
    if (dladdr1(reinterpret_cast<void *>(&getCorvoFolderPath), &info, &extra, RTLD_DL_LINKMAP) != 0) {
        const char *name = static_cast<const link_map *>(extra)->l_name; // empty for the program
        const bool isProgram = name == nullptr || name[0] == '\0';
        file = isProgram ? fs::read_symlink("/proc/self/exe", ignored) : fs::system_complete(name, ignored);
    }
    if (file.empty())
        throw RUNTIME_EXCEPTION("Failed to determine the directory of corvo base.");
    return file;
}

const char *BaseDirectory() {
    static const PathBuffer buffer(FileOfThisCode().parent_path().c_str(), "Corvo base directory path too long");
    return buffer.text;
}

/// The variable's value; the fallback is asked, and may fail, only when there is none.
template <class Fallback> String_t EnvironmentOr(const char *name, Fallback fallback) {
    String_t value;
    return GetValueOfEnvironmentVariable(name, value) ? value : String_t(fallback());
}

const char *DefaultCdfDirectory() {
    // The text names the wrong folder; users know it this way.
    static const PathBuffer buffer(EnvironmentOr("CORVO_DEFAULT_CDF_DIR", BaseDirectory), "CorvoTL path too long");
    return buffer.text;
}

const char *TlDirectory() {
    static const PathBuffer buffer(EnvironmentOr("CORVO_TL_PATH", BaseDirectory), "CorvoTL path too long");
    return buffer.text;
}

/// The first place that exists, else the first of all.
String_t FindConfigFileRegistry() {
    const String_t base = BaseDirectory();
    const String_t places[] = {base + "//share/corvo/ConfigFileRegistry", base + "/..//share/corvo/ConfigFileRegistry",
                               base + "/../..//share/corvo/ConfigFileRegistry"};
    for (const String_t &place : places) {
        boost::system::error_code ignored;
        if (fs::exists(place.c_str(), ignored))
            return place;
    }
    return places[0];
}

const char *ConfigFileRegistry() {
    static const PathBuffer buffer(EnvironmentOr("CORVO_CONFIG_FILE_REGISTRY_PATH", FindConfigFileRegistry),
                                   "CorvoConfigFileRegistry path too long");
    return buffer.text;
}

} // namespace

const char *getCorvoFolderPath(eFolderType type) {
    switch (type) {
    case ftCorvoBaseDir:
    case ftCorvoSharedLib:
    case ftCorvoTLSupport:
        return BaseDirectory();
    case ftCorvoDefaultCdfDir:
        return DefaultCdfDirectory();
    case ftCorvoConfigFileRegistry:
        return ConfigFileRegistry();
    case ftCorvoTL:
        return TlDirectory();
    }
    throw RUNTIME_EXCEPTION("Unknown path type %d", static_cast<int>(type));
}

} // namespace Corvo
