#include "MinimalCorvoGigETL/DeviceEnumerationFilterParser.h"

#include "MinimalCorvo/Utilities.h"

namespace Corvo {

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
        if (!getKeyAndValueFromString(piece, NO_DELIMITER, 0, &key, &value) || key.empty() || value.empty())
            continue;
        info.SetPropertyValue(key, value);
        ++count;
    }
    return count;
}

} // namespace Corvo
