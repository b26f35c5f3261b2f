#include "MinimalCorvo/EmbeddedNodeMapFactory.h"

#include "MinimalCorvo/CorvoBase.h"
#include "MinimalCorvo/Utilities.h"

#include "GenApi/GenApi.h"

#include <gmock/gmock.h>

#include <cstring>

namespace {

using namespace Corvo;

class EmbeddedNodeMapTest : public testing::Test {
protected:
    ~EmbeddedNodeMapTest() override { DestroyNodeMap(nodeMap); }

    GenApi::CIntegerPtr Integer(const char *name) const { return GenApi::CIntegerPtr(nodeMap->GetNode(name)); }

    GenApi::INodeMap *nodeMap = nullptr;
};

/// Registers 0 to 255 of a device, all readable and writable.
class MemoryPort : public GenApi::CPortImpl {
public:
    GenApi::EAccessMode GetAccessMode() const override { return GenApi::RW; }
    void Read(void *buffer, int64_t address, int64_t length) override {
        std::memcpy(buffer, memory + address, static_cast<std::size_t>(length));
    }
    void Write(const void *buffer, int64_t address, int64_t length) override {
        std::memcpy(memory + address, buffer, static_cast<std::size_t>(length));
    }

    unsigned char memory[256] = {};
};

TEST_F(EmbeddedNodeMapTest, WritesTheIpConfigurationAsTheDeviceHoldsIt) {
    MemoryPort port;
    nodeMap = CreateNodeMapFromEmbeddedXML("GigEImplParams");
    ASSERT_TRUE(nodeMap->Connect(&port, "Device"));
    port.memory[0x14] = 0x80; // a bit that is no IP configuration
    Integer("GevCurrentIPConfiguration")->SetValue(5);
    EXPECT_THAT(std::vector<int>(port.memory + 0x14, port.memory + 0x18), testing::ElementsAre(0x80, 0, 0, 5));
    EXPECT_EQ(5, Integer("GevCurrentIPConfiguration")->GetValue());
}

TEST_F(EmbeddedNodeMapTest, ShowsEveryFeatureOfEveryDocument) {
    for (const char *name :
         {"GigEEventParams", "GigEStreamParams", "GigETLParams", "GigEImplParams", "DefaultTransportLayerParams"}) {
        GenApi::INodeMap *map = CreateNodeMapFromEmbeddedXML(name);
        GenApi::FeatureList_t features;
        GenApi::CCategoryPtr(map->GetNode("Root"))->GetFeatures(features);
        EXPECT_LT(0u, features.size()) << name;
        EXPECT_EQ("Device", map->GetDeviceName());
        DestroyNodeMap(map);
    }
    nodeMap = CreateDefaultTransportLayerParamsNodeMap();
    EXPECT_EQ(GetCorvoVersionString(), GenApi::CStringPtr(nodeMap->GetNode("TLVersion"))->GetValue());
    EXPECT_EQ(nullptr, CreateNodeMapFromEmbeddedXML("NoSuchParams"));
    EXPECT_EQ(nullptr, CreateNodeMapFromEmbeddedXML(nullptr));
}

} // namespace
