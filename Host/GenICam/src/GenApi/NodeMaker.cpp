#include "NodeMaker.h"

#include "EnumerationNode.h"
#include "FloatNodes.h"
#include "FormulaNodes.h"
#include "IntegerNodes.h"
#include "PlainNodes.h"
#include "PortNode.h"
#include "RegisterNode.h"

#include <algorithm>
#include <iterator>

namespace GenApi {

namespace {

using Maker = std::unique_ptr<CNodeImpl> (*)(CNodeMapImpl &map, int32_t index);

template <class Node> std::unique_ptr<CNodeImpl> Make(CNodeMapImpl &map, int32_t index) {
    return std::make_unique<Node>(map, index);
}

struct Kind {
    ENodeType type;
    Maker make;
};

constexpr Kind Kinds[] = {
    {ENodeType::Category, Make<CCategoryNode>},         {ENodeType::Port, Make<CPortNode>},
    {ENodeType::Integer, Make<CIntegerNode>},           {ENodeType::IntReg, Make<CIntRegNode>},
    {ENodeType::MaskedIntReg, Make<CIntRegNode>},       {ENodeType::IntSwissKnife, Make<CIntSwissKnifeNode>},
    {ENodeType::IntConverter, Make<CIntConverterNode>}, {ENodeType::Float, Make<CFloatNode>},
    {ENodeType::FloatReg, Make<CFloatRegNode>},         {ENodeType::SwissKnife, Make<CSwissKnifeNode>},
    {ENodeType::Converter, Make<CConverterNode>},       {ENodeType::Boolean, Make<CBooleanNode>},
    {ENodeType::Command, Make<CCommandNode>},           {ENodeType::Enumeration, Make<CEnumerationNode>},
    {ENodeType::EnumEntry, Make<CEnumEntryNode>},       {ENodeType::String, Make<CStringNode>},
    {ENodeType::StringReg, Make<CStringRegNode>},       {ENodeType::Register, Make<CRegisterNode>},
    {ENodeType::Unavailable, Make<CUnavailableNode>}}; // any other is a plain one

} // namespace

std::unique_ptr<CNodeImpl> MakeNode(CNodeMapImpl &map, int32_t index, ENodeType type) {
    const auto kind =
        std::find_if(std::begin(Kinds), std::end(Kinds), [&](const Kind &each) { return each.type == type; });
    return kind == std::end(Kinds) ? std::make_unique<CNodeImpl>(map, index) : kind->make(map, index);
}

} // namespace GenApi
