#include "MinimalCorvoGigETL/DeviceEnumerationFilterParser.h"

#include "Base/GCException.h"
#include "MinimalCorvo/Utilities.h"
#include "MinimalCorvoGigETL/GigEPropertyValueComparer.h"

namespace Corvo {

namespace {

/// A malformed address would fail every comparison with a camera, and with it every enumeration.
bool IsComparable(const String_t &key, const String_t &value) {
    try {
        return GigEPropertyValueComparer().PropertyValuesAreEqual(key, value, value);
    } catch (const GenICam::RuntimeException &) {
        return false;
    }
}

} // namespace

int GetDeviceEnumerationFilterFromEnvironment(DeviceInfoList &filter) {
    filter.clear();
    String_t text;
    if (!GetValueOfEnvironmentVariable("CORVO_DEVICE_FILTER", text) || text.empty())
        return 0;
    String_t piece;
    for (std::size_t i = 0; extractSubString(text, "||", i, piece); ++i) {
        CDeviceInfo entry;
        if (ParseOneEntryFromString(piece, entry) > 0)
            filter.push_back(entry);
    }
    return static_cast<int>(filter.size());
}

int ParseOneEntryFromString(const char *text, CDeviceInfo &info) {
    constexpr char NO_DELIMITER[] = "";
    int count = 0;
    String_t piece;
    for (std::size_t i = 0; extractSubString(text, "&&", i, piece); ++i) {
        String_t key;
        String_t value;
        if (!getKeyAndValueFromString(piece, NO_DELIMITER, 0, &key, &value) || key.empty() || value.empty() ||
            !IsComparable(key, value))
            continue;
        info.SetPropertyValue(key, value);
        ++count;
    }
    return count;
}

} // namespace Corvo
