#include "EnumText.h"

#include "GenApi/IBase.h"

namespace GenApi {

namespace {

template <class Enum> struct SEnumText {
    std::string_view text;
    Enum value;
};

template <class Enum, std::size_t N>
Enum Look(const SEnumText<Enum> (&table)[N], std::string_view text, Enum fallback) {
    for (const SEnumText<Enum> &entry : table)
        if (entry.text == text)
            return entry.value;
    return fallback;
}

constexpr SEnumText<EAccessMode> accessModes[] = {{"NI", NI}, {"NA", NA}, {"WO", WO}, {"RO", RO}, {"RW", RW}};

constexpr SEnumText<EVisibility> visibilities[] = {
    {"Beginner", Beginner}, {"Expert", Expert}, {"Guru", Guru}, {"Invisible", Invisible}};

constexpr SEnumText<ECachingMode> cachingModes[] = {
    {"NoCache", NoCache}, {"WriteThrough", WriteThrough}, {"WriteAround", WriteAround}};

constexpr SEnumText<ERepresentation> representations[] = {
    {"Linear", Linear},       {"Logarithmic", Logarithmic}, {"Boolean", Boolean},      {"PureNumber", PureNumber},
    {"HexNumber", HexNumber}, {"IPV4Address", IPV4Address}, {"MACAddress", MACAddress}};

constexpr SEnumText<EDisplayNotation> notations[] = {
    {"Automatic", fnAutomatic}, {"Fixed", fnFixed}, {"Scientific", fnScientific}};

} // namespace

EAccessMode ParseAccessMode(std::string_view text) { return Look(accessModes, text, RO); }

EVisibility ParseVisibility(std::string_view text) { return Look(visibilities, text, Beginner); }

ECachingMode ParseCachingMode(std::string_view text) { return Look(cachingModes, text, WriteThrough); }

ERepresentation ParseRepresentation(std::string_view text) { return Look(representations, text, PureNumber); }

EDisplayNotation ParseDisplayNotation(std::string_view text) { return Look(notations, text, fnAutomatic); }

const char *AccessModeText(EAccessMode mode) {
    for (const SEnumText<EAccessMode> &entry : accessModes)
        if (entry.value == mode)
            return entry.text.data();
    return "undefined";
}

} // namespace GenApi
