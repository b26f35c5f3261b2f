#pragma once

#include "Layer.h"
#include "MinimalCorvoGigETL/GigEDevice.h"
#include "MinimalCorvoGigETL/GxStatusException.h"

#include "MinimalCorvo/Utilities.h"
#include "camsim/Scene.h"
#include "camsim/Simulator.h"
#include "support/Leaks.h"

#include <thread>

/// A simulated camera on loopback and a device for it.
class DeviceTest : public testing::Test {
protected:
    ~DeviceTest() override {
        device.reset();
        EXPECT_TRUE(eventually([&] { return Holdings::now() == m_before; })) << "the device left something behind";
    }

    static camsim::CameraConfig Config() { return camsim::parseCameras("ip=127.0.0.1/8,enabled=persistent+lla")[0]; }
    static camsim::CameraConfig WithXml(const std::string &xml) {
        camsim::CameraConfig config = Config();
        config.xml.assign(xml.begin(), xml.end());
        return config;
    }
    static std::string Document(const std::string &nodes, const char *port = "Device") {
        return "<?xml version=\"1.0\"?><RegisterDescription ModelName=\"M\" VendorName=\"V\" SchemaMajorVersion=\"1\" "
               "SchemaMinorVersion=\"1\">" +
               nodes + "<Port Name=\"" + port + "\"/></RegisterDescription>";
    }

    static std::string IntReg(const char *name, const char *address, const char *mode = "RW", const char *more = "") {
        return std::string("<IntReg Name='") + name + "'><Address>" + address + "</Address><Length>4</Length>" +
               "<AccessMode>" + mode + "</AccessMode><pPort>Device</pPort><Endianess>BigEndian</Endianess>" + more +
               "</IntReg>";
    }

    /// Replaces camera and device.
    void Start(const camsim::CameraConfig &config = Config()) {
        device.reset();
        for (const camsim::MacAddress &old : cameras.cameras())
            cameras.removeCamera(old);
        cameras.addCamera(config);
        if (!cameras.running())
            cameras.start();
        m_before = Holdings::now();
        mac = config.mac;
        device = Corvo::CreateGigEDevice(Info(config.ipOptions));
        cameras.clearRequests();
    }
    Corvo::CQuorelGigEDeviceInfo Info(std::uint32_t ipOptions = 7) const {
        Corvo::CQuorelGigEDeviceInfo info;
        info.SetAddress(("127.0.0.1:" + std::to_string(cameras.port())).c_str());
        info.SetPropertyValue("_PortableIpConfigOptions", std::to_string(ipOptions << 8).c_str());
        info.SetFullName("NAME");
        return info;
    }

    std::uint32_t Register(std::uint32_t address) const { return cameras.readRegister(mac, address); }
    std::uint32_t Privilege() const { return Register(0x0A00) & 3; }
    void Hold(std::uint32_t privilege) {
        cameras.setHolder(mac, camsim::Holder{{camsim::Ipv4::parse("127.0.0.9"), 4444}, privilege});
    }
    void Silence() { cameras.setFaults(camsim::parseFaults("silent-after=0")); }
    /// The camera answers again and nobody holds it.
    void Revive() {
        cameras.setFaults({});
        cameras.setHolder(mac, std::nullopt);
    }

    GenApi::CIntegerPtr Feature(const char *name) { return device->GetNodeMap()->GetNode(name); }
    GenApi::CIntegerPtr Parameter(const char *name) { return device->GetTLNodeMap()->GetNode(name); }

    /// Commands the camera received, without heartbeats: code and payload as in "82 00000a0000000002".
    std::vector<std::string> Requests() const {
        std::vector<std::string> texts;
        for (const camsim::ReceivedRequest &request : cameras.requests()) {
            const std::string bytes = Corvo::HexEncodeString(request.bytes.data(), request.bytes.size()).c_str();
            const std::string text = bytes.substr(6, 2) + " " + bytes.substr(16);
            if (text.compare(0, 11, "82 00000938") != 0)
                texts.push_back(text);
        }
        return texts;
    }

    camsim::Simulator cameras{{"lo", camsim::AddressMode::Unmanaged, 0}};
    camsim::MacAddress mac;

private:
    static Holdings atStart() {
        std::thread([] {}).join(); // a sanitizer's own thread starts with the first
        return Holdings::now();
    }

    Holdings m_before = atStart();

protected:
    std::unique_ptr<Corvo::CGigEDevice> device;
};
