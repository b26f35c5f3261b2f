#include "genapi_support.h"
#include "support/Zip.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>

using namespace GenApi;
using namespace GenApiTest;

namespace {

const std::string simple = Document("<Integer Name='A'><Value>5</Value></Integer>");

int64_t ValueIn(const std::string &xml, const char *node = "A") {
    CNodeMapRef map;
    map._LoadXMLFromString(xml);
    return CIntegerPtr(map._GetNode(node))->GetValue();
}

CNodeMapFactory Zipped(const std::string &bytes) { return {ContentType_ZippedXml, bytes.data(), bytes.size()}; }
CNodeMapFactory Plain(const std::string &xml) { return {ContentType_Xml, xml.data(), xml.size()}; }

std::string Utf16(const std::string &text) {
    std::string wide = "\xFF\xFE";
    for (const char ch : text)
        wide += {ch, '\0'};
    return wide;
}

TEST(GenApiFactory, ReadsWhatCamerasOfTheFieldStore) {
    EXPECT_EQ(ValueIn(simple), 5);
    EXPECT_EQ(ValueIn("\xEF\xBB\xBF" + simple), 5);
    EXPECT_EQ(ValueIn(simple + std::string(100, '\0')), 5);
    EXPECT_EQ(ValueIn("Camera description <draft>\r\n" + simple), 5);
    EXPECT_EQ(ValueIn(simple.substr(simple.find("<Reg"))), 5);
    EXPECT_EQ(ValueIn(Utf16(simple.substr(simple.find("<Reg")))), 5);
    EXPECT_EQ(ValueIn("<RegisterDescription><Group Comment='g'><Group><Integer Name='A'><!-- c -->"
                      "<Value> 6\n</Value></Integer></Group></Group></RegisterDescription>"),
              6);
    EXPECT_EQ(ValueIn("<RegisterDescription><IntSwissKnife Name='A'><Formula><![CDATA[3 < 4]]> - <!-- c --> 5</Formula>"
                      "</IntSwissKnife></RegisterDescription>"),
              0);
    EXPECT_EQ(ValueIn("<gc:RegisterDescription xmlns:gc='u'><gc:Integer Name='A'><gc:Value>7</gc:Value></gc:Integer>"
                      "</gc:RegisterDescription>"),
              7);
    CNodeMapRef latin;
    latin._LoadXMLFromString("<?xml version='1.0' encoding='ISO-8859-1'?><RegisterDescription>"
                             "<Node Name='A'><ToolTip>\xB5s</ToolTip></Node></RegisterDescription>");
    EXPECT_EQ(latin._GetNode("A")->GetToolTip(), "\xC2\xB5s");
}

std::string Repeated(int count, const std::string &text) {
    std::string repeated;
    for (int i = 0; i < count; ++i)
        repeated += text;
    return repeated;
}

TEST(GenApiFactory, RefusesBrokenAndHostileDocuments) {
    const std::string opened = "<RegisterDescription>", closed = "</RegisterDescription>";
    const std::string documents[] = {
        opened,
        opened + "<Integer></RegisterDescription>",
        "no markup",
        "<Other/>",
        "<!DOCTYPE a [<!ENTITY b 'c'>]>" + simple.substr(simple.find("<Reg")),
        opened + Repeated(100000, "<Group>"),
        opened + Repeated(100000, "<Group>") + Repeated(100000, "</Group>") + closed,
        opened + "<Node Name='A'>" + Repeated(300, "<a>") + Repeated(300, "</a>") + "</Node>" + closed,
        Repeated(2000001, "<a>"),
        opened + "<Category Name='A'>" + Repeated(65537, "<pFeature>A</pFeature>") + "</Category>" + closed,
        std::string(),
        std::string((16u << 20) + 1, ' '),
    };
    for (const std::string &document : documents)
        EXPECT_THROW(ValueIn(document), GenICam::RuntimeException) << document.substr(0, 60);
    try {
        ValueIn("title\n<RegisterDescription><Integer></Float></RegisterDescription>");
        FAIL();
    } catch (const GenICam::RuntimeException &e) {
        EXPECT_NE(std::strstr(e.GetDescription(), "offset 38"), nullptr) << e.GetDescription();
    }
    EXPECT_THROW(CNodeMapFactory().CreateNodeMap(), GenICam::LogicalErrorException);
    EXPECT_THROW(CNodeMapFactory(ContentType_Xml, "/does/not/exist.xml"), GenICam::RuntimeException);
}

TEST(GenApiFactory, Unzips) {
    const std::string archive = Zip({{"readme.txt", "hello"}, {"Camera.XML", simple}});
    CNodeMapFactory factory = Zipped(archive);
    EXPECT_TRUE(factory.IsLoaded());
    factory.Preprocess();
    EXPECT_EQ(factory.ToXml(), simple);
    const CNodeMapRef map(factory.CreateNodeMap("Cam"), "Cam");
    EXPECT_EQ(map._GetNode("A")->GetDeviceName(), "Cam");
    EXPECT_EQ(Zipped(Zip({{"folder/", ""}, {"only", simple}}) + std::string(70000, '\0')).ToXml(), simple);

    const std::string path = testing::TempDir() + "genapi_factory_test.zip";
    std::ofstream(path, std::ios::binary) << archive;
    CNodeMapRef fromFile;
    fromFile._LoadXMLFromZIPFile(path);
    EXPECT_EQ(CIntegerPtr(fromFile._GetNode("A"))->GetValue(), 5);
    std::remove(path.c_str());

    std::string damaged = archive;
    damaged[archive.find("Camera.XML") + 20] ^= 0x55;
    EXPECT_THROW(Zipped(damaged), GenICam::RuntimeException);
    EXPECT_THROW(Zipped(archive.substr(0, archive.size() / 2)), GenICam::RuntimeException);
    EXPECT_THROW(Zipped(simple), GenICam::RuntimeException);
    EXPECT_THROW(Zipped(Zip({{"bomb.xml", std::string(8u << 20, ' ')}})), GenICam::RuntimeException);
    std::vector<std::pair<std::string, std::string>> many(65, {"", "x"});
    for (std::size_t i = 0; i < many.size(); ++i)
        many[i].first = std::to_string(i);
    EXPECT_THROW(Zipped(Zip(many)), GenICam::RuntimeException);
}

TEST(GenApiFactory, InjectsDocuments) {
    CNodeMapFactory factory = Plain(
        Document("<Integer Name='A'><Value>1</Value></Integer><Integer Name='Kept' MergePriority='1'><Value>1</Value>"
                 "</Integer><StructReg><Address>0</Address><pPort>Device</pPort><StructEntry Name='S'/>"
                 "<StructEntry Name='T'/></StructReg>"
                 "<Category Name='Root'><pFeature>A</pFeature></Category>"));
    factory.AddInjectionData(Plain(Document(
        "<Group><Integer Name='A'><Value>2</Value></Integer></Group><Integer Name='Kept'><Value>2</Value></Integer>"
        "<Integer Name='New'><Value>2</Value></Integer><Integer Name='S'><Value>2</Value></Integer>"
        "<Category Name='Root'><pFeature>A</pFeature><pFeature>New</pFeature></Category>")));
    factory.AddInjectionData(Plain(Document("<Integer Name='A'><Value>3</Value></Integer>")));
    const CNodeMapRef map(factory.CreateNodeMap());
    const char *const expected[][2] = {{"A", "3"}, {"Kept", "1"}, {"New", "2"}, {"S", "2"}};
    for (const auto &[name, value] : expected)
        EXPECT_EQ(CIntegerPtr(map._GetNode(name))->ToString(), value) << name;
    EXPECT_NE(map._GetNode("T"), nullptr);
    FeatureList_t features;
    CCategoryPtr(map._GetNode("Root"))->GetFeatures(features);
    EXPECT_EQ(features.size(), 2u);
    EXPECT_EQ(ValueIn(factory.ToXml().c_str()), 3);
    EXPECT_THROW(factory.AddInjectionData(Plain(simple)), GenICam::LogicalErrorException);
    CNodeMapFactory self = Plain(simple);
    EXPECT_THROW(self.AddInjectionData(self), GenICam::LogicalErrorException);
    EXPECT_THROW(Plain(simple).AddInjectionData(Plain("<broken")), GenICam::RuntimeException);
}

TEST(GenApiFactory, ExtractsSubtrees) {
    CNodeMapFactory factory = Plain(Document(
        "<Category Name='Root'><pFeature>A</pFeature><pFeature>E</pFeature></Category>"
        "<Integer Name='A'><pValue>S</pValue></Integer><Integer Name='I'><Value>0</Value></Integer>"
        "<Integer Name='O'><Value>4</Value></Integer><Integer Name='Not'><Value>4</Value></Integer>"
        "<StructReg><Address>0</Address><pIndex pOffset='O'>I</pIndex><pPort>Device</pPort><StructEntry Name='S'/>"
        "</StructReg>"
        "<Enumeration Name='E'><EnumEntry Name='X'><pIsAvailable>I</pIsAvailable><Value>1</Value></EnumEntry>"
        "<Value>1</Value></Enumeration>"));
    CNodeMapFactory subtree = factory.ExtractSubtree("A");
    const CNodeMapRef map(subtree.CreateNodeMap());
    for (const char *const name : {"A", "S", "I", "O", "Device"})
        EXPECT_NE(map._GetNode(name), nullptr) << name;
    for (const char *const name : {"Root", "E", "Not"})
        EXPECT_EQ(map._GetNode(name), nullptr) << name;
    EXPECT_EQ(CDeviceInfoPtr(map._GetNodeMap())->GetModelName(), "M");
    EXPECT_EQ(CNodeMapRef(factory.ExtractSubtree("E").CreateNodeMap())._GetNode("S"), nullptr);
    EXPECT_NE(CNodeMapRef(factory.ExtractSubtree("E").CreateNodeMap())._GetNode("I"), nullptr);
    EXPECT_THROW(factory.ExtractSubtree("Missing"), GenICam::RuntimeException);
}

} // namespace
