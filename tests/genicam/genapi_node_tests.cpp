#include "genapi_support.h"

#include <gtest/gtest.h>

using namespace GenApi;
using namespace GenApiTest;

namespace {

TEST(GenApiNodes, ExceptionsNameNodeAndMode) {
    Camera camera("<Integer Name='Gain'><pValue>R</pValue></Integer>"
                  "<IntReg Name='R'><Address>0</Address>" PORT "</IntReg>");
    try {
        CIntegerPtr(camera["Gain"])->SetValue(1);
        FAIL();
    } catch (const GenICam::AccessException &e) {
        EXPECT_STREQ(e.GetDescription(), "Node 'Gain' is not writable. (Access mode RO)");
    }
}

TEST(GenApiNodes, TellWhatTheFileSaysAboutThem) {
    Camera camera(
        "<Integer Name='A' NameSpace='Standard'><ToolTip>tip &lt;1&gt;</ToolTip><Visibility>Expert</Visibility>"
        "<pInvalidator>B</pInvalidator><pInvalidator>C</pInvalidator><pAlias>F</pAlias><pValue>B</pValue>"
        "</Integer><Integer Name='B'><Value>1</Value></Integer>"
        "<Integer Name='C'><Value>1</Value></Integer>"
        "<Float Name='F'><Value>1</Value><pCastAlias>A</pCastAlias><DisplayPrecision>2</DisplayPrecision></Float>"
        "<Category Name='Root'><pFeature>A</pFeature></Category>");
    INode *const a = camera["Std::A"];
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a->GetName(true), "Std::A");
    EXPECT_EQ(a->GetToolTip(), "tip <1>");
    EXPECT_TRUE(a->IsFeature() && !camera["B"]->IsFeature());
    a->ImposeVisibility(Beginner);
    EXPECT_EQ(a->GetVisibility(), Expert);
    a->ImposeVisibility(Guru);
    EXPECT_EQ(a->GetVisibility(), Guru);
    gcstring value, attribute;
    EXPECT_TRUE(a->GetProperty("pInvalidator", value, attribute));
    EXPECT_EQ(value, "B\tC");
    EXPECT_EQ(CFloatPtr(camera["F"])->GetIntAlias(), CIntegerPtr(a));
    NodeList_t nodes;
    a->GetChildren(nodes, ctInvalidatingChildren);
    EXPECT_EQ(nodes, (NodeList_t{camera["B"], camera["C"]}));
    camera["C"]->GetChildren(nodes, ctDependingNodes);
    EXPECT_EQ(nodes, (NodeList_t{a, camera["B"]}));
    a->GetChildren(nodes, ctTerminalNodes);
    EXPECT_EQ(nodes, NodeList_t{camera["B"]});
    EXPECT_THROW(CCommandPtr(a)->Execute(), GenICam::LogicalErrorException);
    EXPECT_FALSE(IsImplemented(CIntegerPtr(camera["Root"])));
}

TEST(GenApiNodes, ImposedLimitsNarrow) {
    Camera camera("<Integer Name='A'><Value>5</Value><Min>0</Min><Max>10</Max></Integer>"
                  "<Float Name='F'><pValue>A</pValue></Float>");
    const CIntegerPtr a = camera["A"];
    a->ImposeMax(7);
    a->ImposeMin(-3);
    EXPECT_EQ(a->GetMin(), 0);
    EXPECT_EQ(CFloatPtr(camera["F"])->GetMax(), 7.0);
    EXPECT_THROW(a->SetValue(8), GenICam::OutOfRangeException);
    a->SetValue(8, false);
    EXPECT_EQ(a->GetValue(), 8);
    EXPECT_THROW(a->GetValue(true), GenICam::OutOfRangeException);
    CFloatPtr(camera["F"])->SetValue(9, false);
    EXPECT_EQ(a->GetValue(), 9);
}

TEST(GenApiNodes, AFailedWriteLeavesNoStaleCache) {
    Camera camera("<IntReg Name='A'><Address>0</Address><Length>1</Length>" REG "</IntReg>"
                  "<IntReg Name='B'><Address>1</Address><Length>1</Length>" REG
                  "<pInvalidator>A</pInvalidator></IntReg>");
    const CIntegerPtr a = camera["A"], b = camera["B"];
    EXPECT_EQ(a->GetValue() + b->GetValue(), 0);
    camera.port.failsWrites = true;
    EXPECT_THROW(a->SetValue(1), GenICam::RuntimeException);
    camera.port.Fill(0, "0102");
    EXPECT_EQ(a->GetValue() + b->GetValue(), 3);
}

TEST(GenApiNodes, PortAndNodeMapMayGoInAnyOrder) {
    Camera camera("<IntReg Name='A'><Address>0</Address>" PORT "</IntReg>");
    {
        RecordingPort shortLived;
        EXPECT_TRUE(camera.map._Connect(&shortLived, "Device"));
        EXPECT_EQ(camera.port.GetPortNode(), nullptr);
        EXPECT_EQ(shortLived.GetPortNode(), camera["Device"]);
        EXPECT_EQ(camera["A"]->GetAccessMode(), RO);
    }
    EXPECT_EQ(camera["A"]->GetAccessMode(), NI);
    EXPECT_FALSE(camera.map._Connect(&camera.port, "A"));
    EXPECT_TRUE(camera.map._Connect(&camera.port));
    camera.map._Destroy();
    EXPECT_EQ(camera.port.GetPortNode(), nullptr);
    camera.port.InvalidateNode();
    EXPECT_THROW(camera.map._GetNode("A"), GenICam::AccessException);
}

TEST(GenApiNodes, LongChainsAndWideFormulasEndInAnException) {
    std::string nodes =
        "<Integer Name='C1000'><Value>1</Value></Integer><Integer Name='D200'><Value>1</Value></Integer>";
    for (int i = 0; i < 1000; ++i)
        nodes += "<Integer Name='C" + std::to_string(i) + "'><pValue>C" + std::to_string(i + 1) + "</pValue></Integer>";
    for (int i = 0; i < 200; ++i) {
        const std::string next = "D" + std::to_string(i + 1);
        nodes += "<IntSwissKnife Name='D" + std::to_string(i) + "'><pVariable Name='A'>" + next +
                 "</pVariable><pVariable Name='B'>" + next +
                 "</pVariable><Formula>(A + B) / 2</Formula></IntSwissKnife>";
    }
    Camera camera(nodes);
    EXPECT_THROW(CIntegerPtr(camera["C0"])->GetValue(), GenICam::RuntimeException);
    EXPECT_EQ(CIntegerPtr(camera["C850"])->GetValue(), 1);
    // Twice two to the power of 150 ways lead down; each node is computed once.
    EXPECT_EQ(CIntegerPtr(camera["D50"])->GetValue(), 1);
    EXPECT_THROW(CIntegerPtr(camera["D50"])->GetValue(false, true), GenICam::RuntimeException);
}

TEST(GenApiNodes, OfALargeCameraEvaluateAndOneLockReachesAThousand) {
    RecordingPort port;
    CNodeMapRef map;
    map._LoadXMLFromFile(LARGE_CAMERA_XML);
    ASSERT_TRUE(map._Connect(&port));
    NodeList_t nodes;
    map._GetNodes(nodes);
    EXPECT_GE(nodes.size(), 3000u);
    for (INode *const node : nodes) {
        EXPECT_TRUE(IsReadable(node)) << node->GetName();
        if (const CValuePtr value = node) {
            EXPECT_NO_THROW(value->ToString()) << node->GetName();
        }
    }
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
