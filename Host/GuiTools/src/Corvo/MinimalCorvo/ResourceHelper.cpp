#include "MinimalCorvo/ResourceHelper.h"

#include "MinimalCorvo/EmbeddedXml.h"

#include <dlfcn.h>

#include <algorithm>
#include <cassert>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <utility>
#include <vector>

extern "C" const void *LoadResourceData(const char *name, std::size_t *size) {
    const Corvo::EmbeddedXml *xml = Corvo::embeddedXmls;
    while (xml->name != nullptr && std::strcmp(xml->name, name) != 0)
        ++xml;
    *size = xml->size;
    return xml->data;
}

namespace Resource {

namespace {

constexpr char LOOKUP_FUNCTION[] = "LoadResourceData";
using LookupFunction = decltype(&LoadResourceData);

std::mutex handleMapMutex;
/// Data from shared libraries that was not freed yet, with the library it keeps open.
std::vector<std::pair<const void *, void *>> gHandleMap;

/// Speaks up at the end of the program about resources that nobody freed.
struct Janitor {
    ~Janitor() {
        const auto count = static_cast<unsigned int>(gHandleMap.size());
        if (count == 0)
            return;
        Trace("Freeing %u resource%s before exiting. Did you forget to call FreeResource?", count,
              count == 1 ? "" : "s");
        assert(gHandleMap.empty());
        for (const auto &entry : gHandleMap)
            dlclose(entry.second);
    }
} janitor; // after the map, so that it goes before it

void *FindLookupFunction(void *library) {
    dlerror(); // forgets earlier errors
    void *function = dlsym(library, LOOKUP_FUNCTION);
    if (const char *error = dlerror(); error != nullptr)
        Trace("dlsym: %s", error);
    if (function == nullptr)
        Trace("Symbol '%s' not found", LOOKUP_FUNCTION);
    return function;
}

const void *LookUpInLibrary(void *library, const char *name, std::size_t &size) {
    void *function = FindLookupFunction(library);
    if (function == nullptr)
        return nullptr;
    const void *data = reinterpret_cast<LookupFunction>(function)(name, &size);
    if (data != nullptr) {
        const std::lock_guard<std::mutex> lock(handleMapMutex);
        gHandleMap.emplace_back(data, library);
    }
    return data;
}

const void *LoadFromLibrary(const char *name, const char *fileName, std::size_t &size) {
    void *library = dlopen(fileName, RTLD_LAZY);
    if (library == nullptr) {
        Trace("dlopen '%s' failed: %s", fileName, dlerror());
        return nullptr;
    }
    const void *data = LookUpInLibrary(library, name, size);
    if (data == nullptr) {
        size = 0;
        dlclose(library);
    }
    return data;
}

/// Removes the data's entry. \returns null when it has none.
void *TakeLibraryOf(const void *data) {
    const std::lock_guard<std::mutex> lock(handleMapMutex);
    const auto entry = std::find_if(gHandleMap.begin(), gHandleMap.end(),
                                    [data](const auto &candidate) { return candidate.first == data; });
    if (entry == gHandleMap.end())
        return nullptr;
    void *library = entry->second;
    gHandleMap.erase(entry);
    return library;
}

/// \param size receives the stored size.
const void *Load(const char *name, const char *fileName, std::size_t &size) {
    size = 0;
    const void *data = fileName != nullptr ? LoadFromLibrary(name, fileName, size) : LoadResourceData(name, &size);
    if (data != nullptr && size > 0 && static_cast<const char *>(data)[size - 1] != '\0')
        Trace("resource '%s' without trailing zero!", name);
    return data;
}

} // namespace

const void *GetResourceData(const char *name, const char *fileName, std::size_t *size) {
    if (name == nullptr || size == nullptr)
        return nullptr;
    const void *data = Load(name, fileName, *size);
    if (*size > 0)
        --*size; // without the terminating zero, or whatever stands in its place: callers rely on the last byte going
    return data;
}

const char *GetResourceString(const char *name, const char *fileName, std::size_t *size) {
    if (name == nullptr)
        return nullptr;
    std::size_t stored = 0;
    const void *data = Load(name, fileName, stored);
    if (size != nullptr)
        *size = stored;
    return static_cast<const char *>(data);
}

bool FreeResource(const void *data) {
    void *library = TakeLibraryOf(data);
    return library != nullptr && dlclose(library) == 0;
}

void Trace(const char *format, ...) {
    char text[512];
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    std::fprintf(stderr, "%s\n", text);
}

} // namespace Resource
