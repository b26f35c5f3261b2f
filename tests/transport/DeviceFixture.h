#pragma once

#include "MinimalCorvoGigETL/GigEDevice.h"
#include "MinimalCorvoGigETL/GxStatusException.h"
#include "MinimalCorvoGigETL/tools.h"

#include "Thrown.h"
#include "camsim/Simulator.h"
#include "support/Leaks.h"

#include <gmock/gmock.h>

#include <arpa/inet.h>

/// One simulated camera on loopback and a device for it.
class DeviceTest : public testing::Test {
protected:
    ~DeviceTest() override {
        device.reset();
        EXPECT_TRUE(eventually([&] { return Holdings::now() == m_before; })) << "the device left something behind";
    }

    static camsim::SimulatorOptions Options() {
        camsim::SimulatorOptions options;
        options.port = 0;
        return options;
    }

    static camsim::CameraConfig Config() {
        camsim::CameraConfig config = camsim::defaultCamera();
        config.persistent = {camsim::Ipv4::parse("127.0.0.1"), camsim::Ipv4::maskOf(8), {}};
        config.ipEnabled = GEV_IP_CONFIG_PERSISTENT_IP | GEV_IP_CONFIG_LLA;
        return config;
    }
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

    /// Starts the camera and makes the device.
    void Start(const camsim::CameraConfig &config = Config()) {
        cameras.addCamera(config);
        if (!cameras.running())
            cameras.start();
        m_before = Holdings::now();
        mac = config.mac;
        device = Corvo::CreateGigEDevice(Info(config.ipOptions));
        cameras.clearRequests();
    }

    Corvo::CQuorelGigEDeviceInfo Info(std::uint32_t ipOptions = 7) const {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(cameras.port());
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        GEV_DISCOVERY_INFO info{};
        info.IPConfigOptions.PersistentIP = ipOptions & 1;
        info.IPConfigOptions.DHCP = ipOptions >> 1 & 1;
        return Corvo::CDeviceInfo(
            Corvo::CQuorelGigEDeviceInfoImpl(Corvo::AsSockaddr(address), &info, Corvo::AsSockaddr(address)));
    }
    std::string Name() const { return Info().GetFullName().c_str(); }

    std::uint32_t Register(std::uint32_t address) const { return cameras.readRegister(mac, address); }
    std::uint32_t Privilege() const { return Register(0x0A00) & 3; }
    void Silence() {
        camsim::FaultConfig mute;
        mute.silentAfter = 0;
        cameras.setFaults(mute);
    }
    /// The camera answers again and nobody holds it.
    void Revive() {
        cameras.setFaults(camsim::FaultConfig());
        cameras.setHolder(mac, std::nullopt);
    }

    GenApi::CIntegerPtr Feature(const char *name) { return device->GetNodeMap()->GetNode(name); }
    GenApi::CIntegerPtr Parameter(const char *name) { return device->GetTLNodeMap()->GetNode(name); }

    /// Command and payload of what the camera received, heartbeats left out: "0082 00000A0000000002".
    std::vector<std::string> Requests() const {
        std::vector<std::string> texts;
        for (const camsim::ReceivedRequest &request : cameras.requests()) {
            std::string text;
            for (std::size_t i = 2; i < request.bytes.size(); ++i) {
                char digits[3];
                std::snprintf(digits, sizeof digits, "%02X", request.bytes[i]);
                text += i == 4 ? std::string(" ") : i < 4 || i >= 8 ? digits : "";
            }
            if (text.compare(0, 13, "0082 00000938") != 0)
                texts.push_back(text);
        }
        return texts;
    }

    camsim::Simulator cameras{Options()};
    camsim::MacAddress mac;

private:
    Holdings m_before = Holdings::now();

protected:
    std::unique_ptr<Corvo::CGigEDevice> device;
};
