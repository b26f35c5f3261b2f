// A camera description from an untrusted device, plain or zipped: builds the node map and uses every node as a user
// interface would. Only GenICam exceptions may come out.
// fuzz_nodemap_xml -max_len=16384 -rss_limit_mb=2048 -malloc_limit_mb=256 -timeout=10 CORPUS seeds/fuzz_nodemap_xml

#include <GenApi/GenApi.h>

#include <cstring>

using namespace GenApi;

namespace {

constexpr std::size_t maxNodes = 500;
constexpr int64_t maxRegisterLength = 65536;

/// Memory whose bytes follow from their address; writes are forgotten.
class PatternPort : public CPortImpl {
public:
    EAccessMode GetAccessMode() const override { return RW; }
    void Read(void *buffer, int64_t address, int64_t length) override {
        for (int64_t i = 0; i < length; ++i)
            static_cast<uint8_t *>(buffer)[i] =
                static_cast<uint8_t>(static_cast<uint64_t>(address) + static_cast<uint64_t>(i));
    }
    void Write(const void *, int64_t, int64_t) override {}
};

template <class Action> void Try(Action action) {
    try {
        action();
    } catch (const GenICam::GenericException &) {
    }
}

template <class Interface, class Action> void With(INode *node, Action action) {
    if (const CPointer<Interface> pointer = node)
        Try([&] { action(*pointer); });
}

bool IsHuge(INode *node) {
    bool isHuge = false;
    With<IRegister>(node, [&](IRegister &reg) { isHuge = reg.GetLength() > maxRegisterLength; });
    return isHuge;
}

void UseTyped(INode *node) {
    With<IInteger>(node, [](IInteger &value) {
        value.SetValue(value.GetMin());
        value.SetValue(value.GetMax(), false);
        value.GetInc();
        value.GetListOfValidValues();
    });
    With<IFloat>(node, [](IFloat &value) {
        value.SetValue(value.GetMin());
        if (value.HasInc())
            value.GetInc();
    });
    With<IEnumeration>(node, [](IEnumeration &value) {
        StringList_t symbolics;
        value.GetSymbolics(symbolics);
        for (const gcstring &symbolic : symbolics)
            value.FromString(symbolic);
    });
    With<ICommand>(node, [](ICommand &command) {
        command.Execute();
        command.IsDone();
    });
    With<ICategory>(node, [](ICategory &category) {
        FeatureList_t features;
        category.GetFeatures(features);
    });
}

void Use(INode *node) {
    if (IsHuge(node))
        return;
    Try([&] { node->GetAccessMode(); });
    Try([&] { node->GetCachingMode(); });
    With<IValue>(node, [](IValue &value) {
        const gcstring text = value.ToString(true);
        value.FromString(text);
        value.ToString(false, true);
        value.IsValueCacheValid();
    });
    UseTyped(node);
    NodeList_t nodes;
    for (const ELinkType link : {ctReadingChildren, ctDependingNodes, ctTerminalNodes})
        node->GetChildren(nodes, link);
    FeatureList_t features;
    CSelectorPtr(node)->GetSelectedFeatures(features);
    gcstring text;
    gcstring attribute;
    StringList_t names;
    node->GetPropertyNames(names);
    for (const gcstring &name : names)
        node->GetProperty(name, text, attribute);
}

void UseMap(const CNodeMapRef &map) {
    PatternPort port;
    NodeList_t nodes;
    map._GetNodes(nodes);
    nodes.resize(std::min(nodes.size(), maxNodes));
    if (nodes.empty())
        return;
    map._Connect(&port, "Device");
    Register(nodes.front(), [&](INode *) { With<IValue>(nodes.back(), [](IValue &value) { value.FromString("1"); }); });
    for (INode *const node : nodes)
        Use(node);
    map._GetNodeMap()->Poll(1000);
    map._InvalidateNodes();
    map._GetNodeMap()->Connect(nullptr, "Device");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
    const bool isZipped = size >= 4 && std::memcmp(data, "PK\3\4", 4) == 0;
    Try([&] {
        CNodeMapFactory factory(isZipped ? ContentType_ZippedXml : ContentType_Xml, data, size);
        const CNodeMapRef map(factory.CreateNodeMap());
        UseMap(map);
        CNodeMapFactory twice(ContentType_Xml, data, size);
        twice.AddInjectionData(factory);
        const CNodeMapRef merged(twice.CreateNodeMap());
        NodeList_t nodes;
        merged._GetNodes(nodes);
        if (!nodes.empty())
            CNodeMapFactory(twice.ExtractSubtree(nodes.front()->GetName())).ToXml();
    });
    return 0;
}
