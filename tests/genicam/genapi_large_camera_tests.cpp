#include "genapi_support.h"

#include <gtest/gtest.h>

using namespace GenApi;
using namespace GenApiTest;

namespace {

class GenApiLargeCamera : public testing::Test {
protected:
    void SetUp() override {
        map._LoadXMLFromFile(LARGE_CAMERA_XML);
        ASSERT_TRUE(map._Connect(&port));
        map._GetNodes(nodes);
    }

    RecordingPort port;
    CNodeMapRef map;
    NodeList_t nodes;
};

TEST_F(GenApiLargeCamera, EveryFeatureEvaluates) {
    EXPECT_GE(nodes.size(), 3000u);
    std::size_t readable = 0;
    for (INode *const node : nodes) {
        if (!IsReadable(node))
            continue;
        ++readable;
        if (const CValuePtr value = node) {
            EXPECT_NO_THROW(value->ToString()) << node->GetName();
        }
        if (const CIntegerPtr integer = node) {
            EXPECT_LE(integer->GetMin(), integer->GetMax()) << node->GetName();
        }
        if (const CFloatPtr real = node) {
            EXPECT_LE(real->GetMin(), real->GetMax()) << node->GetName();
        }
    }
    EXPECT_EQ(readable, nodes.size());
}

TEST_F(GenApiLargeCamera, OneLockReachesAThousandFeatures) {
    INode *const lock = map._GetNode("TLParamsLocked");
    NodeList_t dependents;
    lock->GetChildren(dependents, ctDependingNodes);
    EXPECT_GE(dependents.size(), 1000u);
    std::size_t calls = 0;
    for (INode *const node : dependents)
        Register(node, [&calls](INode *) { ++calls; });
    EXPECT_EQ(map._GetNode("Width000")->GetAccessMode(), RW);
    CIntegerPtr(lock)->SetValue(1);
    EXPECT_EQ(calls, dependents.size());
    EXPECT_EQ(map._GetNode("Width000")->GetAccessMode(), RO);
}

} // namespace
