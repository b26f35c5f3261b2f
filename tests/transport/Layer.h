#pragma once

#include "Base/GCException.h"
#include "MinimalCorvo/CorvoBase.h"
#include "MinimalCorvoGigETL/IGigETransportLayer.h"
#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"
#include "MinimalCorvoGigETL/TlFactory.h"
#include "MinimalCorvoGigETL/tools.h"
#include "support/TestFolder.h"

#include <gmock/gmock.h>

/// The initialised library, with every trace line in a file. The factory is process-wide and final: every test relies
/// on a process of its own.
class LayerTest : public testing::Test {
protected:
    LayerTest() {
        folder.TakeLog();
        Corvo::CorvoInitialize();
    }
    ~LayerTest() override { Corvo::CorvoTerminate(true); }

    static Corvo::CTlFactory &factory() { return Corvo::CTlFactory::GetInstance(); }
    /// Made on the first call, so that a test can set the environment before.
    static Corvo::IGigETransportLayer &layer() {
        static Corvo::ITransportLayer *const pLayer = factory().CreateTl("QuorelGigE");
        return dynamic_cast<Corvo::IGigETransportLayer &>(*pLayer);
    }
    std::string trace() const { return TestFolder::Read(folder / "log"); }

    TestFolder folder;
};

/// What a call throws: "TYPE: DESCRIPTION", or "" when it returns.
template <class Function> std::string thrownBy(Function function) {
    try {
        function();
    } catch (const GenICam::GenericException &error) {
        const std::string text = error.what(); // ends in the place and type: " (RuntimeException in ...)"
        const std::size_t type = text.rfind(" (") + 2;
        return text.substr(type, text.find("Exception", type) - type) + ": " + error.GetDescription();
    }
    return "";
}

inline Corvo::DeviceInfoList listOf(std::initializer_list<Corvo::CDeviceInfo> infos) {
    Corvo::DeviceInfoList list;
    for (const Corvo::CDeviceInfo &info : infos)
        list.push_back(info);
    return list;
}

/// \param text as in "192.168.1.20:3957"
inline sockaddr socketAddress(const char *text) {
    sockaddr address{};
    Corvo::stoa(text, address);
    return address;
}

/// "KEY=VALUE," for each that is listed.
inline std::string propertiesOf(const Corvo::CDeviceInfo &info) {
    Corvo::StringList_t keys;
    info.GetPropertyNames(keys);
    std::string text;
    for (const Corvo::String_t &key : keys) {
        Corvo::String_t value;
        info.GetPropertyValue(key, value);
        text += std::string(key) + "=" + value.c_str() + ",";
    }
    return text;
}

/// A caller-made info, without device class unless that is among the properties.
inline Corvo::CDeviceInfo infoWith(std::initializer_list<std::pair<const char *, const char *>> properties) {
    Corvo::CDeviceInfo info;
    for (const auto &[key, value] : properties)
        info.SetPropertyValue(key, value);
    return info;
}
