#include "Layer.h"
#include "gxapi/ControlChannel.h"

#include <algorithm>
#include <atomic>
#include <thread>

namespace {

using namespace Corvo;
using testing::HasSubstr;

class Factory : public LayerTest {};

TEST_F(Factory, KnowsTheGigELayerAlone) {
    TlInfoList list(3);
    ASSERT_EQ(1, factory().EnumerateTls(list));
    ASSERT_EQ(1u, list.size());
    EXPECT_EQ("QuorelGigE", list[0].GetDeviceClass());
    EXPECT_EQ("GigE", list[0].GetFriendlyName());
    EXPECT_EQ("GigE/QuorelGigE 5.0.11.4711", list[0].GetFullName());
    EXPECT_EQ("Quorel", list[0].GetVendorName());
    EXPECT_EQ(nullptr, factory().CreateTl("QuorelUsb"));
    EXPECT_THAT(trace(), HasSubstr("Trying to create TL 'QuorelUsb' - "));

    const CDeviceInfo usb = infoWith({{"DeviceClass", "QuorelUsb"}});
    const char *error = "Runtime: The transport layer for device class 'QuorelUsb' could not be created.";
    EXPECT_EQ(error, thrownBy([&] { factory().CreateDevice(usb); }));
    EXPECT_EQ(error, thrownBy([&] { factory().IsDeviceAccessible(usb); }));
}

TEST_F(Factory, AFloodOfWarningsIsCounted) {
    layer();
    Gx::ControlChannel *channel = nullptr;
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(GX_E_ONLY_IPV4, Gx::ControlChannel::Create(nullptr, 0, &channel)); // with two lines
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    EXPECT_EQ(GX_E_ONLY_IPV4, Gx::ControlChannel::Create(nullptr, 0, &channel));
    const std::string text = trace();
    EXPECT_LT(std::count(text.begin(), text.end(), '\n'), 500);
    EXPECT_THAT(text, testing::ContainsRegex("WARN Corvo.GigE.Gx [0-9]+ further lines were left out.\n.*IPv4"));
}

TEST_F(Factory, CountsTheHoldersOfALayer) {
    TlInfoList list;
    factory().EnumerateTls(list);
    ITransportLayer *pFirst = factory().CreateTl("QuorelGigE");
    EXPECT_EQ(pFirst, factory().CreateTl(list[0]));
    EXPECT_EQ("QuorelGigE", pFirst->GetTlInfo().GetDeviceClass());
    EXPECT_NE(nullptr, pFirst->GetNodeMap());
    EXPECT_EQ(pFirst->GetNodeMap(), pFirst->GetNodeMap());
    factory().ReleaseTl(pFirst);
    EXPECT_FALSE(layer().AnnounceRemoteDevice("10.0.0.1")); // still there
    EXPECT_FALSE(layer().RenounceRemoteDevice("10.0.0.1"));
    factory().ReleaseTl(pFirst);
    factory().ReleaseTl(pFirst);
    EXPECT_EQ("InvalidArgument: The transport layer is not held.", thrownBy([&] { factory().ReleaseTl(pFirst); }));
    factory().ReleaseTl(nullptr);
}

TEST_F(Factory, EveryCallAfterTerminationFails) {
    ITransportLayer *pLayer = factory().CreateTl("QuorelGigE");
    CorvoTerminate(false);
    DeviceInfoList devices;
    TlInfoList layers;
    const CDeviceInfo info;
    const std::function<void()> calls[] = {
        [&] { factory().EnumerateTls(layers); },        [&] { factory().CreateTl("QuorelGigE"); },
        [&] { factory().ReleaseTl(pLayer); },           [&] { factory().EnumerateDevices(devices); },
        [&] { factory().IsDeviceAccessible(info); },    [&] { factory().CreateDevice(info); },
        [&] { factory().CreateFirstDevice(info, {}); }, [&] { factory().CreateDevice(String_t("name")); },
        [&] { factory().DestroyDevice(nullptr); },
    };
    for (const auto &call : calls)
        EXPECT_EQ("LogicalError: Do not use any corvo object after Corvo::CorvoTerminate() has been called.",
                  thrownBy(call));
    CorvoInitialize();
}

/// A camera at an address of this host where nobody answers.
CQuorelGigEDeviceInfoImpl silentCamera() {
    const GEV_DISCOVERY_INFO answer{};
    const sockaddr address = socketAddress("127.0.0.1:9");
    return {address, &answer, address};
}

TEST_F(Factory, TerminationWaitsForRunningCalls) {
    layer();
    std::thread caller([] { factory().IsDeviceAccessible(silentCamera()); }); // three times 200 ms
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const auto start = std::chrono::steady_clock::now();
    CorvoTerminate(false);
    EXPECT_GT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(300));
    caller.join();
    CorvoInitialize();
}

TEST_F(Factory, MayBeTerminatedWhileOthersMakeAndDestroyDevices) {
    setenv("CORVO_GIGE_HEARTBEAT", "1", 1); // no channel accepts it, so nobody is asked for a description
    const CQuorelGigEDeviceInfoImpl info = silentCamera();
    std::atomic<int> made{0};
    const auto makeAndDestroy = [&] {
        for (;;) {
            ICorvoDevice *const device = factory().CreateDevice(info);
            ++made;
            std::thread rival([=] { thrownBy([=] { factory().DestroyDevice(device); }); });
            thrownBy([=] { factory().DestroyDevice(device); });
            rival.join();
        }
    };
    std::thread threads[4];
    for (std::thread &thread : threads)
        thread = std::thread([&] { thrownBy(makeAndDestroy); });
    while (made < 100)
        std::this_thread::yield();
    CorvoTerminate(false);
    for (std::thread &thread : threads)
        thread.join();
    CorvoInitialize();
}

} // namespace
