#include "DeviceFixture.h"

#include <malloc.h>
#include <thread>

using namespace Corvo;
using testing::ElementsAre;

namespace {

class DeviceLoss : public DeviceTest {
protected:
    /// Opens the device with short timeouts, so that a loss is found out soon.
    void Open() {
        device->Open(Control);
        Parameter("WriteTimeout")->SetValue(10);
        Parameter("ReadTimeout")->SetValue(10);
        Parameter("HeartbeatTimeout")->SetValue(500);
    }
    DeviceCallbackHandle OnLoss(std::function<void(ICorvoDevice *)> callback) {
        return device->RegisterRemovalCallback(callback);
    }
    DeviceCallbackHandle NoteLoss(const std::string &text) {
        return OnLoss([=](ICorvoDevice *lost) { Note(lost == device.get() ? text : "wrong device"); });
    }
    void Note(const std::string &note) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_notes.push_back(note);
    }
    std::vector<std::string> Notes() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_notes;
    }
    void AwaitNotes(std::size_t count) const {
        ASSERT_TRUE(eventually([&] { return Notes().size() >= count; }));
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_notes;
};

TEST_F(DeviceLoss, IsReportedOnceForEachOpening) {
    Start();
    for (std::size_t i = 1; i <= 2; ++i) {
        Open();
        NoteLoss("a");
        const DeviceCallbackHandle second = NoteLoss("b");
        NoteLoss("c");
        EXPECT_TRUE(device->DeregisterRemovalCallback(second));
        EXPECT_FALSE(device->DeregisterRemovalCallback(second));
        Silence();
        AwaitNotes(2 * i);
        EXPECT_TRUE(device->IsOpen()) << "until it is closed";
        EXPECT_THAT(thrownBy([&] { Feature("Width")->GetValue(); }), testing::HasSubstr("(0xE1000016)"));
        device->OnSurpriseRemoval(); // once is enough
        device->Close();
        Revive();
    }
    EXPECT_THAT(Notes(), ElementsAre("a", "c", "a", "c"));
}

TEST_F(DeviceLoss, CallbacksMayDoAnything) {
    Start();
    Open();
    DeviceCallbackHandle handles[2] = {};
    handles[0] = OnLoss([&](ICorvoDevice *lost) {
        for (const DeviceCallbackHandle handle : handles)
            Note(lost->DeregisterRemovalCallback(handle) ? "gone" : "unknown");
        NoteLoss("never: it came too late");
        throw std::runtime_error("on purpose");
    });
    handles[1] = NoteLoss("never: it is gone");
    OnLoss([&](ICorvoDevice *lost) {
        lost->Close();
        Note(thrownBy([&] { lost->Open(Control); }).substr(0, 23));
    });
    NoteLoss("never: the device was closed");
    Silence();
    AwaitNotes(3);
    Revive();
    Open();
    OnLoss([&](ICorvoDevice *) {
        device.release()->Delete();
        Note("destroyed");
    });
    NoteLoss("never: the device is gone");
    Silence();
    AwaitNotes(4);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_THAT(Notes(), ElementsAre("gone", "gone", "Runtime: Failed to open", "destroyed"));
}

TEST_F(DeviceLoss, IsHeardOfWhileACallbackForTheLastOneRuns) {
    Start();
    Open();
    OnLoss([&](ICorvoDevice *lost) {
        lost->Close();
        Revive();
        Open();
        OnLoss([&](ICorvoDevice *) { Note("again"); });
        Silence();
        thrownBy([&] { Feature("Width")->GetValue(false, true); });
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        Note("first");
    });
    Silence();
    AwaitNotes(2);
    EXPECT_THAT(Notes(), ElementsAre("first", "again"));
}

/// The callback is on its way while the device closes: it runs before the close or not at all.
TEST_F(DeviceLoss, MeetsAClose) {
    Start();
    for (int i = 0; i < 20; ++i) {
        Open();
        std::atomic<bool> isClosed{false};
        OnLoss([&](ICorvoDevice *lost) { EXPECT_TRUE(!isClosed && lost->IsOpen()); });
        Silence();
        std::thread user([&] { thrownBy([&] { Feature("Width")->GetValue(false, true); }); });
        std::this_thread::sleep_for(std::chrono::milliseconds(25 + i)); // around the end of three attempts
        device->Close();
        isClosed = true;
        user.join();
        Revive();
    }
}

TEST_F(DeviceLoss, OpensAndClosesWhileOthersUseIt) {
    Start();
    std::atomic<bool> isDone{false};
    const auto set = [&](const GenApi::CIntegerPtr &node, int base) {
        for (int i = 0; !isDone; ++i)
            thrownBy([&] { node->SetValue(base + i % 7); });
    };
    std::thread camera(set, Feature("GevHeartbeatTimeout"), 3000);
    std::thread parameter(set, Parameter("HeartbeatTimeout"), 4000);
    std::thread rival([&] {
        for (; !isDone; thrownBy([&] { device->Close(); })) {
            thrownBy([&] { device->Open(Stream); });
            thrownBy([&] { NoteLoss("never"); });
        }
    });
    for (int i = 0; i < 50; ++i) {
        thrownBy([&] { device->Open(Control); });
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        thrownBy([&] { device->Close(); });
    }
    isDone = true;
    camera.join();
    parameter.join();
    rival.join();
    EXPECT_THAT(Notes(), testing::IsEmpty());
}

// That no thread and no descriptor stays behind is checked after every test.

TEST_F(DeviceLoss, TwoHundredOpeningsKeepNoMemory) {
    Start();
    const auto cycles = [&](int count) {
        for (int i = 0; i < count; ++i) {
            device->Open(Control);
            device->Close();
        }
        cameras.clearRequests();
        return mallinfo2().uordblks;
    };
    const std::size_t before = cycles(20);
    EXPECT_LT(cycles(200), before + 65536);
}

} // namespace
