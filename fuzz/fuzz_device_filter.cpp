// A device filter as the environment gives it. What it accepts is matched against a camera.
// fuzz_device_filter -max_len=512 -timeout=5 CORPUS seeds/fuzz_device_filter

#include "FuzzInput.h"

#include "Base/GCException.h"
#include "MinimalCorvoGigETL/DeviceEnumerationFilterParser.h"
#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"

using namespace Corvo;

namespace {

CQuorelGigEDeviceInfo MakeCamera() {
    CQuorelGigEDeviceInfo camera;
    camera.SetSerialNumber("12345678").SetModelName("Model 1");
    camera.SetAddress("192.168.1.20:3956").SetIpAddress("192.168.1.20").SetSubnetMask("255.255.255.0");
    camera.SetDefaultGateway("");
    return camera;
}

bool IsTrimmed(const String_t &text) {
    const String_t blanks = " \t\n\v\f\r";
    return !text.empty() && blanks.find(text[0]) == String_t::npos &&
           blanks.find(text[text.size() - 1]) == String_t::npos;
}

void CheckEntry(const CDeviceInfo &entry) {
    StringList_t names;
    entry.GetPropertyNames(names);
    for (const String_t &name : names) {
        String_t value;
        Require(entry.GetPropertyValue(name, value) && IsTrimmed(name) && IsTrimmed(value), "a pair that is not tidy");
        Require(name.find("=") == String_t::npos, "a key with a sign");
        for (const String_t &text : {name, value})
            Require(text.find("||") == String_t::npos && text.find("&&") == String_t::npos, "a pair that is not split");
    }
}

void Match(const CDeviceInfo &entry) {
    static const CQuorelGigEDeviceInfo camera = MakeCamera();
    try {
        camera.IsSubset(entry);
        Require(CQuorelGigEDeviceInfo(entry).IsSubset(entry), "an entry that does not match itself");
    } catch (const GenICam::GenericException &) { // for a text that is no address
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    // Not setenv, which keeps every value for ever.
    static std::string variable;
    variable = "CORVO_DEVICE_FILTER=" + std::string(data, data + size);
    putenv(variable.data()); // NOLINT(concurrency-mt-unsafe): there is one thread
    DeviceInfoList filter;
    const int count = GetDeviceEnumerationFilterFromEnvironment(filter);
    Require(count >= 0 && static_cast<std::size_t>(count) == filter.size(), "the number of entries");
    for (const CDeviceInfo &entry : filter) {
        CheckEntry(entry);
        Match(entry);
    }
    return 0;
}
