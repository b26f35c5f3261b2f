#include "camsim/Scene.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <fstream>
#include <sstream>

using namespace camsim;
using namespace std::chrono_literals;

namespace {

TEST(Scene, ReadsCamerasAndFaults) {
    std::istringstream text("# two cameras\r\n"
                            "[camera]\n"
                            "  mac = 02-5A-E3-0A-0B-0C \r\n"
                            "ip = 192.168.1.10/24 via 192.168.1.1\n"
                            "model = Left, big = 1\n"
                            "url = http://camera/camera.xml\n"
                            "\n"
                            "; the other\n"
                            "[camera]\n"
                            "capabilities = 0x1F\n"
                            "flash = 2500\n"
                            "pending-ack = no\n"
                            "[faults]\n"
                            "loss-from-camera = 12.5\n"
                            "delay = 5-20\n"
                            "commands = readreg+0x8004\n"
                            "limit = 3\n");
    const Scene scene = readScene(text, "scene");
    ASSERT_EQ(scene.cameras.size(), 2u);
    const CameraConfig &first = scene.cameras[0];
    EXPECT_EQ(first.mac.toString(), "02:5A:E3:0A:0B:0C");
    EXPECT_EQ(first.persistent,
              (IpSettings{Ipv4::parse("192.168.1.10"), Ipv4::maskOf(24), Ipv4::parse("192.168.1.1")}));
    EXPECT_EQ(first.model, "Left, big = 1");
    EXPECT_EQ(first.firstUrl, "http://camera/camera.xml");
    EXPECT_EQ(scene.cameras[1].capabilities, 0x1Fu);
    EXPECT_EQ(scene.cameras[1].flashTime, 2500ms);
    EXPECT_FALSE(scene.cameras[1].sendsPendingAck);
    EXPECT_EQ(scene.faults.lossFromCamera, 12.5);
    EXPECT_EQ(scene.faults.delayMin, 5ms);
    EXPECT_EQ(scene.faults.delayMax, 20ms);
    EXPECT_EQ(scene.faults.commands, (std::vector<std::uint16_t>{0x0080, 0x8004}));
    EXPECT_EQ(scene.faults.limit, 3u);
}

TEST(Scene, CountsCamerasUp) {
    const auto cameras = parseCameras("mac=025AE30102FF,ip=192.168.1.255/16,forced=10.0.0.9/8,dhcp=10.1.0.9/16,"
                                      "serial=SN-099,name=cam,count=3");
    ASSERT_EQ(cameras.size(), 3u);
    EXPECT_EQ(cameras[2].mac.toString(), "02:5A:E3:01:03:01"); // carries into the next octet
    EXPECT_EQ(cameras[2].persistent.address.toString(), "192.168.2.1");
    EXPECT_EQ(cameras[2].forced->address.toString(), "10.0.0.11");
    EXPECT_EQ(cameras[2].dhcpLease->address.toString(), "10.1.0.11");
    EXPECT_EQ(cameras[1].serial, "SN-100");
    EXPECT_EQ(cameras[2].serial, "SN-101");
    EXPECT_EQ(cameras[2].userName, "cam");
    EXPECT_EQ(parseCameras("model=a\\,b")[0].model, "a,b");
}

TEST(Scene, ErrorsNameThePlaceTheKeyAndWhatWasExpected) {
    const std::pair<const char *, const char *> cases[] = {
        {"[camera]\nmac = 02:5A:E3:01:02\n", "scene:2: .*mac.*02:5A:E3:01:02.*six octets"},
        {"[camera]\n\nip = 192.168.1.10\n", "scene:3: .*ip.*ADDRESS/PREFIX"},
        {"[camera]\nip = 192.168.1.256/24\n", "192.168.1.256"},
        {"[camera]\nip = 192.168.1.255/24\n", "192.168.1.255/24.*host"},
        {"[camera]\nsilence = -1\n", "silence.*-1"},
        {"[camera]\nreachable = maybe\n", "reachable.*maybe.*yes, no"},
        {"[camera]\nheld-by = 10.0.0.1\n", "held-by.*ADDRESS:PORT"},
        {"[camera]\nheld-by = 10.0.0.1:70000\n", "65535"},
        {"[camera]\nserial = 12345678901234567\n", "serial number.*16"},
        {"[camera]\nxml = /nonexistent.xml\n", "xml.*/nonexistent.xml"},
        {"[camera]\nip = 192.168.1.10/24\ncount = 250\n", "count.*192.168.1.10/24"},
        {"[camera]\nxml-address = 0x900\n", "camera 02:.*0x900 overlaps"},
        {"[camera]\nxml-address = 0xFFFFFFFC\n", "address space"},
        {"[camera]\nxml-address = 0x8002\n", "aligned"},
        {"[camera]\ncount = 0\n", "count.*N"},
        {"[camera]\nlink-local = 10.0.0.5\n", "link-local address 10.0.0.5"},
        {"[camera]\nforced = 10.0.0.0/8\n", "forced address 10.0.0.0"},
        {"[camera]\nspeed = 1\n", "unknown key 'speed'"},
        {"[camera]\nmac\n", "'mac'.*key=value"},
        {"mac = 025AE3010203\n", "scene:1: .*\\[camera\\]"},
        {"[kamera]\n", "\\[kamera\\].*\\[faults\\]"},
        {"[faults]\nduplicate = 101\n", "duplicate.*0 to 100"},
        {"[faults]\ndelay = 9-3\n", "delay"},
    };
    for (const auto &[text, message] : cases) {
        std::istringstream stream(text);
        EXPECT_THAT([&] { readScene(stream, "scene"); },
                    testing::ThrowsMessage<SceneError>(testing::ContainsRegex(message)));
    }
    EXPECT_THROW(loadScene("/nonexistent.scene"), SceneError);
}

TEST(Scene, TakesTheXmlFileAsItIs) {
    const std::string path = testing::TempDir() + "camsim-description.zip";
    std::ofstream(path, std::ios::binary) << std::string("PK\x03\x04\x00z", 6);
    const CameraConfig config = parseCameras("xml=" + path + ",xml-address=0x20000")[0];
    std::remove(path.c_str());
    EXPECT_EQ(config.xml, (std::vector<std::uint8_t>{'P', 'K', 3, 4, 0, 'z'}));
    EXPECT_EQ(config.xmlFileName, "camsim-description.zip");
    EXPECT_EQ(config.xmlAddress, 0x20000u);
}

} // namespace
