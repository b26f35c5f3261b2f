#include "DeviceFixture.h"

#include "MinimalCorvoGigETL/XmlFileProvider.h"
#include "support/ScriptedPeer.h"
#include "support/TestFolder.h"
#include "support/Zip.h"

using namespace Corvo;
using testing::HasSubstr;

namespace {

// Of a length that fills no whole words.
const std::string MapNode = "<Integer Name='A'><Value>5</Value></Integer> ";

class DeviceXml : public DeviceTest {
protected:
    static constexpr std::uint32_t FileAddress = 0x00200000;

    /// A camera with the file and the URLs; "{}" in them stands for the place of the file.
    static camsim::CameraConfig WithUrls(const std::string &file, std::string first, std::string second = {}) {
        camsim::CameraConfig config = WithXml("");
        if (!file.empty())
            config.memory.push_back({FileAddress, {file.begin(), file.end()}, false});
        char place[40];
        std::snprintf(place, sizeof place, "%X;%zX", FileAddress, file.size());
        for (std::string *url : {&first, &second})
            if (const std::size_t at = url->find("{}"); at != std::string::npos)
                url->replace(at, 2, place);
        config.firstUrl = first;
        config.secondUrl = second;
        return config;
    }
    /// Replaces the camera.
    void Restart(const camsim::CameraConfig &config) {
        device.reset();
        for (const camsim::MacAddress &old : cameras.cameras())
            cameras.removeCamera(old);
        Start(config);
    }
    std::string DownloadFailure() {
        std::vector<std::uint8_t> bytes;
        return thrownBy([&] { XmlFileProviderPrivateImpl().ProvideXmlFileRaw(Info(), bytes); });
    }
    std::string Text() {
        String_t name = "before", text = "before";
        XmlFileProviderPrivateImpl().ProvideXmlFile(Info(), name, text);
        EXPECT_EQ(name, "");
        return std::string(text.c_str(), text.size());
    }
};

TEST_F(DeviceXml, IsFoundAndReadInEveryForm) {
    const std::string plain = Document(MapNode);
    ASSERT_NE(plain.size() % 4, 0u);
    const std::string zipped = Zip({{"camera.xml", plain}});
    const struct {
        std::string file;
        const char *first, *second;
    } cases[] = {
        {plain, "Local:camera.xml;{}", ""},
        {plain, "LOCAL:Camera v1.2.xml;{}", ""},
        {zipped, "local:camera.zip;{}", ""},
        {zipped, "Local:wrongly.named.xml;{}", ""},
        {plain, "http://www.example.com/camera.xml", "local:cam.xml;{}"},
        {plain, "no URL at all", "Local:cam.xml;{}?SchemaVersion=1.1.0"},
        {zipped, "\xEF\xBB\xBF Local: camera.zip ; 0x200000 ; 0x0000", ""},
        {plain, "Local:///camera.xml;{}\r\n", ""},
        {"\xEF\xBB\xBF" + plain, "Local:camera.xml;{}", ""},
        {plain + std::string(5, '\0'), "Local:camera.xml;{}", ""},
    };
    for (auto row : cases) {
        SCOPED_TRACE(row.first);
        std::string first = row.first;
        if (const std::size_t at = first.find("0x0000"); at != std::string::npos)
            first.replace(at, 6, [&] {
                char text[20];
                std::snprintf(text, sizeof text, "0x%zx", row.file.size());
                return std::string(text);
            }());
        camsim::CameraConfig config = WithUrls(row.file, first, row.second);
        config.heldBy = camsim::Holder{{camsim::Ipv4::parse("127.0.0.9"), 4444}, GEV_CONTROL_ACCESS};
        Restart(config);
        ASSERT_NE(device->GetNodeMap(), nullptr) << DownloadFailure();
        EXPECT_EQ(Feature("A")->GetValue(), 5);
        EXPECT_EQ(Text(), row.file == zipped ? plain : row.file);
    }
}

TEST_F(DeviceXml, UnusableLeavesACameraWithoutFeatures) {
    TestFolder folder;
    const std::string file = folder / "camera.xml";
    std::ofstream(file) << Document(MapNode);
    const std::string name = Name(), plain = Document(MapNode);
    const struct {
        std::string file, first, failure; // of the download; empty when only the content is wrong
    } cases[] = {
        {plain, "", "Runtime: Camera NAME doesn't provide a local URL"},
        {plain, "Local:camera.zip", "Runtime: Camera NAME doesn't provide a valid local URL"},
        {plain, "Local:camera.XML;{}", "Runtime: XML file in device has unsupported file extension .XML"},
        {plain, "Local:camera.xml;200000;1000001",
         "Runtime: The XML file of camera NAME has 16777217 bytes, more than the 16777216 allowed"},
        {plain, "Local:camera.xml;200000;FFFFFFFF", "more than the 16777216 allowed"},
        {plain, "Local:camera.xml;FFFFFFF0;100", "Runtime: Failed to read memory at 0xfffffff0, 0x100 bytes. "},
        {plain, "Local:camera.xml;200000;4", ""},
        {"<RegisterDescription", "Local:camera.xml;{}", ""},
        {"PK\x03\x04 and no archive", "Local:camera.zip;{}", ""},
        {"file://" + file, "Local:camera.xml;{}", ""},
    };
    for (const auto &row : cases) {
        SCOPED_TRACE(row.first);
        Restart(WithUrls(row.file, row.first));
        std::string expected = row.failure;
        if (const std::size_t at = expected.find("NAME"); at != std::string::npos)
            expected.replace(at, 4, Name());
        EXPECT_THAT(DownloadFailure(), HasSubstr(expected));
        EXPECT_EQ(device->GetNodeMap(), nullptr);
        device->Open(Control);
        device->ChangeIpConfiguration(true, false);
        EXPECT_EQ(Register(0x0014), 5u);
        device->Close();
    }
    Restart(WithUrls(plain, "Local:camera.xml;200000;4"));
    EXPECT_EQ(thrownBy([&] { Text(); }), "Runtime: Failed to get XML from Device");
    cameras.setHolder(mac, camsim::Holder{{camsim::Ipv4::parse("127.0.0.9"), 4444}, GEV_EXCLUSIVE_CONTROL_ACCESS});
    EXPECT_EQ(DownloadFailure(), "Runtime: Failed to download the XML configuration file from device '" + Name() +
                                     "': " + GxStatusText(0xE1018006).c_str() + " role=0\n");
}

TEST_F(DeviceXml, ComesFromFilesAndInjectedDocuments) {
    Start(WithXml(""));
    TestFolder folder;
    const std::string plain = folder / "camera.xml", zipped = folder / "camera.ZIP";
    std::ofstream(plain) << Document(MapNode);
    std::ofstream(zipped, std::ios::binary) << Zip({{"camera.xml", Document(MapNode)}});
    const std::string injected = Document("<Integer Name='B'><Value>6</Value></Integer>");
    for (const std::string &url : {"file://" + plain, "FILE://" + zipped}) {
        device->CreateNodemapFromXmlData({url.begin(), url.end()}, {String_t(injected), "file://" + plain}, false);
        EXPECT_EQ(Feature("A")->GetValue(), 5);
        EXPECT_EQ(Feature("B")->GetValue(), 6);
    }
    GenApi::INodeMap *const kept = device->GetNodeMap();
    EXPECT_EQ(thrownBy([&] {
                  device->CreateNodemapFromXmlData({'<', 'a', '/', '>'}, {}, false);
              }),
              "Runtime: Create Nodemap from XML data failed.");
    for (const std::string text : {"no XML", "file:///does/not/exist"})
        EXPECT_THAT(thrownBy([&] {
                        device->CreateNodemapFromXmlData({text.begin(), text.end()}, {}, false);
                    }),
                    HasSubstr("Runtime: "));
    EXPECT_EQ(device->GetNodeMap(), kept);
}

/// A camera that refuses to read behind the end of its file.
TEST_F(DeviceXml, EndsExactlyWhereTheFileEnds) {
    const std::string file = Document(MapNode);
    char url[512] = {};
    std::snprintf(url, sizeof url, "Local:camera.xml;10000;%zx", file.size());
    ScriptedPeer peer([&](const Bytes &request, std::size_t) {
        if (request[3] == 0x80)
            return std::vector<Bytes>{acknowledge(request, 0, 0x0081, Bytes(request.size() - 8))};
        const std::size_t address = request[9] << 16 | request[10] << 8 | request[11];
        const std::size_t count = request[14] << 8 | request[15];
        const std::string memory = address < 0x10000 ? std::string(url, sizeof url) : file;
        const std::size_t offset = address < 0x10000 ? 0 : address - 0x10000;
        if (offset + count > memory.size())
            return std::vector<Bytes>{acknowledge(request, 0x8003, 0x0085, {})};
        Bytes payload(request.begin() + 8, request.begin() + 12);
        payload.insert(payload.end(), memory.begin() + static_cast<std::ptrdiff_t>(offset),
                       memory.begin() + static_cast<std::ptrdiff_t>(offset + count));
        return std::vector<Bytes>{acknowledge(request, 0, 0x0085, payload)};
    });
    const sockaddr_in address = peer.address();
    CQuorelGigEDeviceInfo info;
    info.SetAddress(atos(AsSockaddr(address)));
    std::vector<std::uint8_t> bytes;
    XmlFileProviderPrivateImpl().ProvideXmlFileRaw(info, bytes);
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), file);
}

} // namespace
