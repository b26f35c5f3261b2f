#include <cstddef>
#include <cstring>

extern "C" const void *LoadResourceData(const char *name, std::size_t *size) {
    *size = 77; // not to be believed without data
    if (std::strcmp(name, "unknown") == 0)
        return nullptr;
    *size = std::strcmp(name, "ends with zero") == 0 ? 4 : std::strcmp(name, "ends without zero") == 0 ? 3 : 0;
    return "abc";
}
