#pragma once

#include "MinimalCorvo/TraceLog.h"
#include "commissioning/AddressRules.h"
#include "commissioning/AddressText.h"
#include "commissioning/Change.h"
#include "commissioning/Connection.h"
#include "commissioning/Context.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Search.h"
#include "gxapi/StopToken.h"
#include "support/Site.h"
#include "transport/Layer.h"

#include <deque>
#include <thread>

/// The library on one adapter, nic0 at 192.168.10.1/24, and who uses it: answers as foretold, and may interfere.
class Operations : public LayerTest, protected commissioning::Interaction {
protected:
    using Cameras = std::vector<camsim::CameraConfig>;

    static commissioning::Address address(const char *text) { return commissioning::addressFrom(text).value(); }

    void start(const Cameras &cameras) {
        site.emplace("nic0", "192.168.10.1/24", cameras);
        devices = commissioning::search(layer());
        ASSERT_EQ(cameras.size(), devices.size());
    }
    Corvo::CQuorelGigEDeviceInfo device(unsigned number) { return *commissioning::findByMac(devices, macOf(number)); }
    /// To a mode, and a static one to addresses, from what is known of the camera.
    commissioning::Change change(unsigned number, commissioning::Mode mode, const char *wanted = "192.168.10.51",
                                 const char *mask = "255.255.255.0", const char *gateway = "0.0.0.0") {
        const commissioning::Camera known = commissioning::cameraOf(device(number));
        const commissioning::StoredAddresses stored = known.stored.value_or(commissioning::StoredAddresses());
        const bool isStatic = mode == commissioning::Mode::Static;
        commissioning::Change result;
        result.device = device(number);
        result.adapter = "nic0";
        result.mode = mode;
        result.address = address(wanted);
        result.mask = address(mask);
        result.gateway = address(gateway);
        result.modeDiffers = mode != known.mode;
        result.addressDiffers = isStatic && result.address != stored.address;
        result.maskDiffers = isStatic && result.mask != stored.mask;
        result.gatewayDiffers = isStatic && result.gateway != stored.gateway;
        return result;
    }
    static std::string macOf(unsigned number) { return "025AE300000" + std::to_string(number); }
    camsim::CameraStatus status(unsigned number = 1) { return site->cameras.status(testnet::camera(number).mac); }
    std::uint32_t reg(std::uint32_t address) { return site->cameras.readRegister(testnet::camera(1).mac, address); }
    /// From one moment on, of camera 1.
    void spoil(const std::string &faults) {
        site->cameras.setFaults(testnet::camera(1).mac,
                                faults.empty() ? camsim::FaultConfig() : camsim::parseFaults(faults));
    }

    commissioning::Context context() {
        return {layer(),
                devices,
                connection,
                *this,
                commissioning::Tracer(tracelog::LogGetCatID("Lanvane.Base")),
                {3, std::chrono::milliseconds(50), 3}};
    }

    // What the user does.
    std::shared_ptr<void> begin(commissioning::Step step) override {
        if (onStep)
            onStep(step);
        return step == commissioning::Step::Look && stop ? std::make_shared<Gx::CStopScope>(stop) : nullptr;
    }
    void pause(std::chrono::milliseconds time) override { std::this_thread::sleep_for(time); }
    std::optional<commissioning::TemporaryAddress>
    askTemporaryAddress(const commissioning::AddressQuestion &question) override {
        reasons.push_back(question.reason);
        if (answers.empty())
            return std::nullopt;
        const char *const ip = answers.front();
        answers.pop_front();
        return commissioning::TemporaryAddress{question.mac, address(ip), address("255.255.255.0"), 0};
    }
    void rejectTemporaryAddress() override { reasons.emplace_back("(rejected)"); }
    void accessDenied() override { reports.emplace_back("access denied"); }
    void updated(const std::string &, std::optional<commissioning::Address>) override {}
    void failure(const char *task, const std::exception_ptr &error, const char *) override {
        reports.push_back(task + (": " + thrownBy([&] { std::rethrow_exception(error); })));
        if (onFailure)
            onFailure();
    }

    std::optional<testnet::Site> site;
    Corvo::DeviceInfoList devices;
    commissioning::Connection connection;
    std::function<void(commissioning::Step)> onStep;
    std::function<void()> onFailure;
    const Gx::CStopToken *stop = nullptr; ///< for a look at what the camera has
    std::deque<const char *> answers;     ///< temporary addresses; then the user cancels
    std::vector<std::string> reasons, reports;
};
