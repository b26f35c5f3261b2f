#include "Layer.h"
#include "MinimalCorvoGigETL/DeviceEnumerationFilterParser.h"
#include "MinimalCorvoGigETL/GigEPropertyValueComparer.h"
#include "MinimalCorvoGigETL/GxStatus2Msg.h"
#include "MinimalCorvoGigETL/GxStatusException.h"

#include <arpa/inet.h>

namespace {

using namespace Corvo;

TEST(Conversions, AddressTexts) {
    const std::string longText = "10.0.0.1" + std::string(55, ' ') + "x:7"; // the x is the 64th character
    const std::pair<const char *, const char *> cases[] = {
        {"192.168.1.7:1234", "192.168.1.7:1234"}, {"10.0.0.5", "10.0.0.5:0"},         {"abc", "255.255.255.255:0"},
        {"abc:70", "255.255.255.255:70"},         {"", "255.255.255.255:0"},          {":5", "255.255.255.255:0"},
        {nullptr, "255.255.255.255:0"},           {"300.1.1.1", "255.255.255.255:0"}, {"010.0.0.1:x", "8.0.0.1:0"},
        {longText.c_str(), "10.0.0.1:7"},
    };
    for (const auto &[text, expected] : cases)
        EXPECT_EQ(expected, atos(socketAddress(text))) << (text ? text : "null");

    sockaddr v6{};
    v6.sa_family = AF_INET6;
    EXPECT_EQ("Runtime: Protocoll not supported!", thrownBy([&] { atos(v6); }));
    EXPECT_EQ("Runtime: Protocoll not supported!", thrownBy([&] { CQuorelGigEDeviceInfoImpl::PortNr(v6); }));

    CQuorelGigEDeviceInfo info;
    info.SetIpAddress("10.0.0.9").SetInterface("10.0.0.1:99");
    EXPECT_EQ("10.0.0.9:3956", atos(Address(info)));
    info.SetAddress("10.0.0.8:4000");
    EXPECT_EQ(htons(4000), Address_in(info).sin_port);
    EXPECT_EQ("10.0.0.1:99", atos(AsSockaddr(Interface_in(info))));
}

/// "NAME|EXTENSION|ADDRESS|LENGTH", or "" when the URL is none.
std::string split(const char *url) {
    String_t name;
    String_t extension;
    unsigned address = 0;
    std::size_t length = 0;
    if (!SplitLocalUrl(url, name, extension, address, length))
        return "";
    return std::string(name) + "|" + extension.c_str() + "|" + std::to_string(address) + "|" + std::to_string(length);
}

TEST(Conversions, LocalUrls) {
    const std::pair<const char *, const char *> cases[] = {
        {"cam.XML;0x20000; 3F4?SchemaVersion=1.0.0", "cam|.XML|131072|1012"},
        {"local.xml;1;2", "local|.xml|1|2"},
        {"Local:cam.zip;8000", ""},
        {"Local:cam;80.00;10", ""},
        {"Local:cam.zip;0;FFFFFFFF", "cam|.zip|0|4294967295"},
        {"Local:cam.zip;100000000;10", ""},
        {"Local:cam.zip;0;-1", ""},
        {"", ""},
    };
    for (const auto &[url, expected] : cases)
        EXPECT_EQ(expected, split(url)) << url;
    EXPECT_TRUE(IsLocalUrl("Local:file.zip;10000;2000"));
    EXPECT_FALSE(IsLocalUrl("loca"));
    String_t text = "http://host:80/x";
    String_t scheme;
    EXPECT_TRUE(SplitUrl(text, scheme, text));
    EXPECT_EQ("http|//host:80/x", scheme + "|" + text);
}

TEST(Conversions, DefaultHeartbeatTimeout) {
    unsetenv("CORVO_GIGE_HEARTBEAT");
    EXPECT_EQ(300000u, GetDefaultHeartbeatTimeout());
    const std::pair<const char *, std::uint32_t> cases[] = {{"5000", 5000},  {"0", 300000},     {"-5", 300000},
                                                            {"abc", 300000}, {"4294967296", 0}, {"4294967297", 1}};
    for (const auto &[text, expected] : cases) {
        setenv("CORVO_GIGE_HEARTBEAT", text, 1);
        EXPECT_EQ(expected, GetDefaultHeartbeatTimeout()) << text;
    }
}

TEST(Conversions, StatusTexts) {
    EXPECT_EQ("*** Error getting status message", GxStatus2Msg(0x12345678));
    EXPECT_EQ("Runtime: at 0x10: False. (0x21000001)", thrownBy([] { THROW_IF_GX_FAILED(GX_FALSE, "at 0x%x: ", 16); }));
}

TEST(Comparer, ComparesAddressesByValue) {
    const struct {
        const char *key, *a, *b;
        bool equal;
    } cases[] = {
        {"Address", "192.168.0.10:3956", "192.168.000.010:3956", false}, // octal 0 and 8
        {"Address", "192.168.0.10", "192.168.0.10:0", true},
        {"Address", "192.168.0.10:1", "192.168.0.10:2", false},
        {"IpAddress", " 0xC0 . 0250.0.10 trailing", "192.168.0.10", true},
        {"SubnetMask", "", "0.0.0.0", true},
        {"DefaultGateway", "1.2.3.4", "1.2.3.5", false},
        {"Interface", "1.2.3.4", "1.2.3.04", false},
        {"Any", "", "", true},
    };
    for (const auto &row : cases)
        EXPECT_EQ(row.equal, GigEPropertyValueComparer().PropertyValuesAreEqual(row.key, row.a, row.b)) << row.a;
    for (const std::string text : {"300.1.1.1", "1.2.3", "1.2.-3.4", "abc", "09.1.1.1", "4294967297.0.0.1"})
        EXPECT_EQ("Runtime: Invalid address: " + text,
                  thrownBy([&] { GigEPropertyValueComparer::inet_addr_local(text.c_str()); }));
    EXPECT_EQ(0xC0A8000Au, GigEPropertyValueComparer::inet_addr_local("192.168.0.10"));
}

/// The filter of a text: "KEY=VALUE," for each pair and ";" behind each entry.
std::string parsed(const char *text) {
    setenv("CORVO_DEVICE_FILTER", text, 1);
    DeviceInfoList filter(3);
    const int count = GetDeviceEnumerationFilterFromEnvironment(filter);
    EXPECT_EQ(static_cast<int>(filter.size()), count) << text;
    std::string result;
    for (const CDeviceInfo &entry : filter)
        result += propertiesOf(entry) + ";";
    return result;
}

TEST(Filter, FromTheEnvironment) {
    const std::pair<const char *, const char *> cases[] = {
        {"SerialNumber=12345678 || DeviceClass=QuorelGigE && IpAddress=192.168.1.20",
         "SerialNumber=12345678,;DeviceClass=QuorelGigE,IpAddress=192.168.1.20,;"},
        {"A=1&&A=2", "A=2,;"},
        {"none || =v || k= || \t && B = b = c && x ||", "B=b = c,;"},
        {"A=one|two&three", "A=one|two&three,;"},
        {"A=1 && IpAddress=192.168.1.*", "A=1,IpAddress=192.168.1.*,;"},
        {"||", ""},
        {"  ", ""},
        {"", ""},
    };
    for (const auto &[text, expected] : cases)
        EXPECT_EQ(expected, parsed(text)) << text;
}

} // namespace
