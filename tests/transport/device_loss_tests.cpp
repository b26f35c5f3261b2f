#include "DeviceFixture.h"

#include <thread>

using namespace Corvo;
using testing::ElementsAre;

namespace {

/// Notes callbacks and lets the test wait for them.
class Notes {
public:
    void Add(const std::string &note) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_notes.push_back(note);
    }
    std::vector<std::string> All() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_notes;
    }
    bool Reach(std::size_t count) const {
        return eventually([&] { return All().size() >= count; });
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_notes;
};

class DeviceLoss : public DeviceTest {
protected:
    /// Opens the device with short timeouts, so that a loss is found out soon.
    void Open() {
        device->Open(Control);
        Parameter("ReadTimeout")->SetValue(10);
        Parameter("WriteTimeout")->SetValue(10);
        Parameter("HeartbeatTimeout")->SetValue(500);
    }
    DeviceCallbackHandle OnLoss(std::function<void(ICorvoDevice *)> callback) {
        return device->RegisterRemovalCallback(callback);
    }
    DeviceCallbackHandle Note(const std::string &note) {
        return OnLoss([=](ICorvoDevice *lost) { notes.Add(note + (lost == device.get() ? "" : "?")); });
    }
    Notes notes;
};

TEST_F(DeviceLoss, IsReportedOnceForEachOpening) {
    Start();
    for (int i = 1; i <= 2; ++i) {
        Open();
        Note("a");
        const DeviceCallbackHandle second = Note("b");
        Note("c");
        EXPECT_TRUE(device->DeregisterRemovalCallback(second));
        EXPECT_FALSE(device->DeregisterRemovalCallback(second));
        Silence();
        EXPECT_TRUE(notes.Reach(2u * i));
        EXPECT_TRUE(device->IsOpen()) << "until it is closed";
        EXPECT_THAT(thrownBy([&] { Feature("Width")->GetValue(); }), testing::HasSubstr("(0xE1000016)"));
        device->OnSurpriseRemoval(); // once is enough
        device->Close();
        EXPECT_EQ(device->AccessMode(), AccessModeSet());
        Revive();
    }
    EXPECT_THAT(notes.All(), ElementsAre("a", "c", "a", "c"));
}

TEST_F(DeviceLoss, CallbacksMayDeregisterThemselvesAndOthersAndThrow) {
    Start();
    Open();
    DeviceCallbackHandle handles[4] = {};
    handles[0] = OnLoss([&](ICorvoDevice *lost) {
        notes.Add(lost->DeregisterRemovalCallback(handles[0]) ? "gone" : "?");
        notes.Add(lost->DeregisterRemovalCallback(handles[2]) ? "gone" : "?");
    });
    handles[1] = OnLoss([&](ICorvoDevice *) {
        OnLoss([&](ICorvoDevice *) { notes.Add("late"); });
        throw std::runtime_error("on purpose");
    });
    handles[2] = Note("never");
    handles[3] = Note("last");
    Silence();
    EXPECT_TRUE(notes.Reach(3));
    device->Close();
    EXPECT_THAT(notes.All(), ElementsAre("gone", "gone", "last"));
}

TEST_F(DeviceLoss, CallbacksMayCloseReopenAndDestroyTheDevice) {
    Start();
    Open();
    OnLoss([&](ICorvoDevice *lost) {
        lost->Close();
        notes.Add(thrownBy([&] { lost->Open(Control); }).substr(0, 24));
    });
    Note("never: the device was closed");
    Silence();
    EXPECT_TRUE(notes.Reach(1));
    Revive();
    Open();
    OnLoss([&](ICorvoDevice *lost) {
        EXPECT_EQ(lost, device.get());
        device.release()->Delete();
        notes.Add("destroyed");
    });
    Note("never: the device is gone");
    Silence();
    EXPECT_TRUE(notes.Reach(2));
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_THAT(notes.All(), ElementsAre("Runtime: Failed to open ", "destroyed"));
}

/// The callback is on its way while the device closes: it runs before the close or not at all.
TEST_F(DeviceLoss, MeetsAClose) {
    Start();
    for (int i = 0; i < 20; ++i) {
        Open();
        std::atomic<bool> isClosed{false};
        OnLoss([&](ICorvoDevice *lost) {
            EXPECT_FALSE(isClosed);
            EXPECT_TRUE(lost->IsOpen());
        });
        Silence();
        std::thread user([&] { thrownBy([&] { Feature("Width")->GetValue(false, true); }); });
        std::this_thread::sleep_for(std::chrono::milliseconds(25 + i));
        device->Close();
        isClosed = true;
        user.join();
        Revive();
    }
}

TEST_F(DeviceLoss, HeartbeatIsSetOnBothSidesWhileTheDeviceOpensAndCloses) {
    Start();
    std::atomic<bool> isDone{false};
    const auto set = [&](const GenApi::CIntegerPtr &node, int base) {
        for (int i = 0; !isDone; ++i)
            thrownBy([&] { node->SetValue(base + i % 7); });
    };
    std::thread camera(set, Feature("GevHeartbeatTimeout"), 3000);
    std::thread parameter(set, Parameter("HeartbeatTimeout"), 4000);
    std::thread reader([&] {
        while (!isDone)
            thrownBy([&] { Parameter("ReadWriteTimeoutCount")->GetValue(); });
    });
    for (int i = 0; i < 20; ++i) {
        device->Open(Control);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        device->Close();
    }
    isDone = true;
    camera.join();
    parameter.join();
    reader.join();
}

} // namespace
