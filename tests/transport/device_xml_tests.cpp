#include "DeviceFixture.h"

#include "MinimalCorvoGigETL/XmlFileProvider.h"
#include "MinimalCorvoGigETL/tools.h"
#include "support/ScriptedPeer.h"
#include "support/Zip.h"

#include <atomic>

using namespace Corvo;
using testing::HasSubstr;

namespace {

class DeviceXml : public DeviceTest {
protected:
    /// A camera with a file at 0x200000; "{}" in its URLs stands for the length of the file.
    static camsim::CameraConfig WithUrls(const std::string &file, std::string first, std::string second = {}) {
        camsim::CameraConfig config = WithXml("");
        config.memory.push_back({0x200000, {file.begin(), file.end()}, false});
        char length[20];
        std::snprintf(length, sizeof length, "%zX", file.size());
        for (std::string *url : {&first, &second})
            if (const std::size_t at = url->find("{}"); at != std::string::npos)
                url->replace(at, 2, length);
        config.firstUrl = first;
        config.secondUrl = second;
        return config;
    }
    std::string Text() {
        String_t name = "before", text = "before";
        XmlFileProviderPrivateImpl().ProvideXmlFile(Info(), name, text);
        return {text.c_str(), text.size()};
    }
    /// Of a length that fills no whole words, so that a camera that serves only those can refuse it.
    const std::string plain = Document("<Integer Name='A'><Value>5</Value></Integer> ");
    const std::string zipped = Zip({{"camera.xml", plain}});
};

TEST_F(DeviceXml, IsFoundAndReadInEveryForm) {
    ASSERT_NE(plain.size() % 4, 0u);
    const struct {
        std::string file;
        const char *first, *second;
    } cases[] = {
        {plain, "LOCAL:Camera v1.2.xml;200000;{}", ""},
        {zipped, "local:camera.zip;200000;{}", ""},
        {zipped, "Local:wrongly.named.xml;200000;{}", ""},
        {plain, "http://www.example.com/camera.xml", "local:cam.xml;200000;{}"},
        {plain, "no URL at all", "Local:cam.xml;200000;{}?SchemaVersion=1.1.0"},
        {zipped, "\xEF\xBB\xBF Local: camera.zip ; 0x200000 ; 0x{}\r\n", ""},
        {plain, "Local:///camera.xml;200000;{}", ""},
    };
    for (const auto &row : cases) {
        SCOPED_TRACE(row.first);
        Start(WithUrls(row.file, row.first, row.second));
        ASSERT_NE(device->GetNodeMap(), nullptr);
        EXPECT_EQ(Feature("A")->GetValue(), 5);
        EXPECT_EQ(Text(), row.file == zipped ? plain : row.file);
    }
    Hold(GEV_CONTROL_ACCESS); // reading takes no privilege
    EXPECT_NE(CreateGigEDevice(Info())->GetNodeMap(), nullptr);
}

TEST_F(DeviceXml, UnusableLeavesACameraWithoutFeatures) {
    TestFolder folder;
    std::ofstream(folder / "camera.xml") << plain;
    const struct {
        std::string file, first, failure; // of the download; empty when only the content is wrong
    } cases[] = {
        {plain, "", "Runtime: Camera NAME doesn't provide a local URL"},
        {plain, "Local:camera.zip", "Runtime: Camera NAME doesn't provide a valid local URL"},
        {plain, "Local:camera.XML;200000;{}", "Runtime: XML file in device has unsupported file extension .XML"},
        {plain, "Local:camera.xml;200000;1000001",
         "Runtime: The XML file of camera NAME has 16777217 bytes, more than the 16777216 allowed"},
        {plain, "Local:camera.xml;FFFFFFF0;100", "Runtime: Failed to read memory at 0xfffffff0, 0x100 bytes. "},
        {"<RegisterDescription", "Local:camera.xml;200000;{}", ""},
        {"PK\x03\x04 and no archive", "Local:camera.zip;200000;{}", ""},
        {"file://" + (folder / "camera.xml").string(), "Local:camera.xml;200000;{}", ""},
        {plain, "Local:camera.xml;200000;4", ""},
    };
    std::vector<std::uint8_t> bytes;
    const auto download = [&] { XmlFileProviderPrivateImpl().ProvideXmlFileRaw(Info(), bytes); };
    for (const auto &row : cases) {
        SCOPED_TRACE(row.first);
        Start(WithUrls(row.file, row.first));
        EXPECT_THAT(thrownBy(download), HasSubstr(row.failure));
        EXPECT_EQ(device->GetNodeMap(), nullptr);
        device->Open(Control);
        device->ChangeIpConfiguration(true, false);
        EXPECT_EQ(Register(0x0014), 5u);
        device->Close();
    }
    EXPECT_EQ(thrownBy([&] { Text(); }), "Runtime: Failed to get XML from Device");
    Hold(GEV_EXCLUSIVE_CONTROL_ACCESS);
    EXPECT_EQ(thrownBy(download),
              std::string("Runtime: Failed to download the XML configuration file from device 'NAME") +
                  "': " + GxStatusText(0xE1018006).c_str() + " role=0\n");
}

TEST_F(DeviceXml, ComesFromFilesAndInjectedDocuments) {
    Start(WithXml(""));
    TestFolder folder;
    const std::string plainFile = folder / "camera.xml", zippedFile = folder / "camera.ZIP";
    std::ofstream(plainFile) << plain;
    std::ofstream(zippedFile, std::ios::binary) << zipped;
    const auto create = [&](const std::string &text, const StringList_t &injected) {
        return thrownBy([&] { device->CreateNodemapFromXmlData({text.begin(), text.end()}, injected, false); });
    };
    for (const std::string &url : {"file://" + plainFile, "FILE://" + zippedFile}) {
        EXPECT_EQ(create(url, {Document("<Integer Name='B'><Value>6</Value></Integer>"), "file://" + plainFile}), "");
        EXPECT_EQ(Feature("A")->GetValue() * Feature("B")->GetValue(), 30);
    }
    device->Open(Stream);
    EXPECT_EQ(create(plain, {}), "LogicalError: Device 'NAME' already open.");
    device->Close();
    GenApi::INodeMap *const kept = device->GetNodeMap();
    EXPECT_EQ(create("<a/>", {}), "Runtime: Create Nodemap from XML data failed.");
    EXPECT_THAT(create("file:///does/not/exist", {}), HasSubstr("Runtime: "));
    EXPECT_EQ(device->GetNodeMap(), kept);
}

/// A camera that serves any number of bytes, but none behind the end of its file; and one that answers for ever.
TEST_F(DeviceXml, IsReadToItsEndAndNotBeyondOrGivenUp) {
    std::atomic<std::uint16_t> refusal{0x8003};
    std::atomic<bool> isSlow{false};
    char url[512] = {};
    std::snprintf(url, sizeof url, "Local:camera.xml;10000;%zx", plain.size());
    ScriptedPeer peer([&](const Bytes &request, std::size_t) -> std::vector<Bytes> {
        if (isSlow && request[3] == 0x84 && request[9] == 1)
            return std::vector<Bytes>(1001, acknowledge(request, 0, 0x0085, {}, -1));
        if (request[3] == 0x80)
            return {acknowledge(request, 0, 0x0081, Bytes(request.size() - 8))};
        const auto offset = static_cast<std::size_t>(request[10] << 8 | request[11]);
        const std::string file = request[9] == 1 ? plain.substr(offset) : std::string(url, sizeof url);
        const auto count = static_cast<std::size_t>(request[14] << 8 | request[15]);
        if (count > file.size())
            return {acknowledge(request, refusal, 0x0085, {})};
        const std::string payload = "addr" + file.substr(0, count);
        return {acknowledge(request, 0, 0x0085, Bytes(payload.begin(), payload.end()))};
    });
    CQuorelGigEDeviceInfo info;
    info.SetAddress(atos(AsSockaddr(peer.address())));
    std::vector<std::uint8_t> bytes;
    for (const std::uint16_t status : {std::uint16_t{0x8003}, std::uint16_t{0x8006}}) { // access denied ends a channel
        refusal = status;
        XmlFileProviderPrivateImpl().ProvideXmlFileRaw(info, bytes);
        EXPECT_EQ(std::string(bytes.begin(), bytes.end()), plain);
    }
    isSlow = true;
    const auto start = std::chrono::steady_clock::now();
    const XmlFileProviderPrivateImpl provider(std::chrono::milliseconds(300));
    EXPECT_THAT(thrownBy([&] { provider.ProvideXmlFileRaw(info, bytes); }), HasSubstr("(0xE101800B)"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1500));
}

} // namespace
