#pragma once

#include "Base/GCException.h"
#include "MinimalCorvo/CorvoBase.h"
#include "MinimalCorvoGigETL/IGigETransportLayer.h"
#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"
#include "MinimalCorvoGigETL/TlFactory.h"
#include "support/TestFolder.h"

#include <gmock/gmock.h>

/// The initialised library, with every trace line in a file. The factory is process-wide and final: every test relies
/// on a process of its own.
class LayerTest : public testing::Test {
protected:
    LayerTest() {
        const std::string config = folder / "log.properties";
        std::ofstream(config) << "log4j.rootCategory=DEBUG, A\nlog4j.appender.A=org.apache.log4j.FileAppender\n"
                                 "log4j.appender.A.layout=org.apache.log4j.PatternLayout\n"
                                 "log4j.appender.A.layout.ConversionPattern=%p %c %m%n\nlog4j.appender.A.fileName="
                              << (folder / "log").string() << '\n';
        setenv("GENICAM_LOG_CONFIG", config.c_str(), 1);
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
    } catch (const GenICam::RuntimeException &error) {
        return std::string("Runtime: ") + error.GetDescription();
    } catch (const GenICam::LogicalErrorException &error) {
        return std::string("LogicalError: ") + error.GetDescription();
    } catch (const GenICam::AccessException &error) {
        return std::string("Access: ") + error.GetDescription();
    } catch (const GenICam::InvalidArgumentException &error) {
        return std::string("InvalidArgument: ") + error.GetDescription();
    }
    return "";
}

inline Corvo::DeviceInfoList listOf(const Corvo::CDeviceInfo &info) {
    Corvo::DeviceInfoList list;
    list.push_back(info);
    return list;
}

/// A caller-made info, without device class unless that is among the properties.
inline Corvo::CDeviceInfo infoWith(std::initializer_list<std::pair<const char *, const char *>> properties) {
    Corvo::CDeviceInfo info;
    for (const auto &[key, value] : properties)
        info.SetPropertyValue(key, value);
    return info;
}
