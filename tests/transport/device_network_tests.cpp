#include "Layer.h"
#include "MinimalCorvoGigETL/ICorvoGigEDevice.h"
#include "support/Leaks.h"
#include "support/Site.h"

using namespace Corvo;
using namespace testnet;
using testing::HasSubstr;

namespace {

class Devices : public LayerTest {
protected:
    Site site{"nic0",
              "192.168.1.5/24",
              {cameraAt(21, "192.168.1.21/24", ",model=Twin"), cameraAt(3, "192.168.1.23/24", ",model=Twin")}};
    const CDeviceInfo twins = infoWith({{"ModelName", "Twin"}});
};

TEST_F(Devices, AreMadeFromInfosAndNames) {
    ICorvoDevice *pDevice = factory().CreateFirstDevice(twins);
    EXPECT_EQ("3", pDevice->GetDeviceInfo().GetSerialNumber());
    EXPECT_NE(nullptr, pDevice->GetNodeMap());
    const String_t fullName = pDevice->GetDeviceInfo().GetFullName();
    factory().DestroyDevice(pDevice);

    pDevice = factory().CreateDevice(fullName);
    EXPECT_EQ("3", pDevice->GetDeviceInfo().GetSerialNumber());
    EXPECT_THAT(trace(), HasSubstr("WARN corvo.base.TlFactory The function CTlFactory::CreateDevice(const String_t& "
                                   "fullname) is deprecated."));
    factory().DestroyDevice(pDevice);
    EXPECT_EQ("InvalidArgument: The device was not created by this factory.",
              thrownBy([&] { factory().DestroyDevice(pDevice); }));
    factory().DestroyDevice(nullptr);
}

TEST_F(Devices, KeepTheirLayerAlive) {
    const Holdings before = Holdings::now();
    ITransportLayer *pLayer = factory().CreateTl("QuorelGigE");
    ICorvoDevice *pFirst = pLayer->CreateDevice(infoWith({{"SerialNumber", "21"}}));
    ICorvoDevice *pSecond = factory().CreateDevice(infoWith({{"SerialNumber", "3"}}));
    factory().ReleaseTl(pLayer);
    pFirst->Open(Control);
    EXPECT_TRUE(site.cameras.status(camera(21).mac).holder);
    factory().DestroyDevice(pFirst);
    EXPECT_FALSE(site.cameras.status(camera(21).mac).holder);
    pLayer->DestroyDevice(pSecond); // and with it the layer
    EXPECT_EQ(before, Holdings::now());
}

TEST_F(Devices, ThatAreLeftAreDestroyedAtTermination) {
    const Holdings before = Holdings::now();
    factory().CreateDevice(infoWith({{"SerialNumber", "21"}}))->Open(Exclusive);
    EXPECT_TRUE(site.cameras.status(camera(21).mac).holder);
    CorvoTerminate(false);
    EXPECT_FALSE(site.cameras.status(camera(21).mac).holder);
    EXPECT_EQ(before, Holdings::now());
    CorvoInitialize();
}

} // namespace
