#include <cstddef>
#include <cstring>

extern "C" const void *LoadResourceData(const char *name, std::size_t *size) {
    *size = 77; // not to be believed without data
    if (std::strcmp(name, "unknown") == 0)
        return nullptr;
    *size = 4;
    return "abc";
}
