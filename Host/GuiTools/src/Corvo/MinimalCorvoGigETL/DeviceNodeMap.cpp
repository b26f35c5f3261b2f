#include "MinimalCorvoGigETL/DeviceNodeMap.h"

#include "Base/GCException.h"

#include <strings.h>

#include <string_view>

namespace Corvo {

namespace {

using namespace std::literals;

constexpr std::string_view FileScheme = "file://";

bool StartsWith(std::string_view text, std::string_view start) {
    return text.size() >= start.size() && strncasecmp(text.data(), start.data(), start.size()) == 0;
}

bool EndsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && StartsWith(text.substr(text.size() - end.size()), end);
}

bool IsZipped(std::string_view data) { return StartsWith(data, "PK\x03\x04"sv); }

std::string_view View(const std::vector<std::uint8_t> &data) {
    return {reinterpret_cast<const char *>(data.data()), data.size()};
}

GenApi::CNodeMapFactory FactoryFromFile(std::string_view path) {
    const bool isZipped = path.size() > 4 && EndsWith(path, ".zip");
    return {isZipped ? GenApi::ContentType_ZippedXml : GenApi::ContentType_Xml, String_t(std::string(path))};
}

GenApi::CNodeMapFactory FactoryFromData(std::string_view data) {
    if (StartsWith(data, FileScheme))
        return FactoryFromFile(data.substr(FileScheme.size()));
    return {IsZipped(data) ? GenApi::ContentType_ZippedXml : GenApi::ContentType_Xml, data.data(), data.size()};
}

} // namespace

bool IsZipped(const std::vector<std::uint8_t> &data) { return IsZipped(View(data)); }

bool NamesFile(const std::vector<std::uint8_t> &data) { return StartsWith(View(data), FileScheme); }

GenApi::CNodeMapFactory MakeNodeMapFactory(const std::vector<std::uint8_t> &data, const StringList_t &injectedXml) {
    if (data.size() < 5)
        throw RUNTIME_EXCEPTION("Create Nodemap from XML data failed.");
    GenApi::CNodeMapFactory factory = FactoryFromData(View(data));
    for (const String_t &document : injectedXml)
        factory.AddInjectionData(FactoryFromData({document.c_str(), document.size()}));
    return factory;
}

} // namespace Corvo
