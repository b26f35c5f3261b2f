#include "NodeMaker.h"

#include "EnumerationNode.h"
#include "FloatNodes.h"
#include "FormulaNodes.h"
#include "IntegerNodes.h"
#include "PlainNodes.h"
#include "PortNode.h"
#include "RegisterNode.h"

namespace GenApi {

std::unique_ptr<CNodeImpl> MakeNode(CNodeMapImpl &map, int32_t index, ENodeType type) {
    switch (type) {
    case ENodeType::Category:
        return std::make_unique<CCategoryNode>(map, index);
    case ENodeType::Port:
        return std::make_unique<CPortNode>(map, index);
    case ENodeType::Integer:
        return std::make_unique<CIntegerNode>(map, index);
    case ENodeType::IntReg:
    case ENodeType::MaskedIntReg:
        return std::make_unique<CIntRegNode>(map, index);
    case ENodeType::IntSwissKnife:
        return std::make_unique<CIntSwissKnifeNode>(map, index);
    case ENodeType::IntConverter:
        return std::make_unique<CIntConverterNode>(map, index);
    case ENodeType::Float:
        return std::make_unique<CFloatNode>(map, index);
    case ENodeType::FloatReg:
        return std::make_unique<CFloatRegNode>(map, index);
    case ENodeType::SwissKnife:
        return std::make_unique<CSwissKnifeNode>(map, index);
    case ENodeType::Converter:
        return std::make_unique<CConverterNode>(map, index);
    case ENodeType::Boolean:
        return std::make_unique<CBooleanNode>(map, index);
    case ENodeType::Command:
        return std::make_unique<CCommandNode>(map, index);
    case ENodeType::Enumeration:
        return std::make_unique<CEnumerationNode>(map, index);
    case ENodeType::EnumEntry:
        return std::make_unique<CEnumEntryNode>(map, index);
    case ENodeType::String:
        return std::make_unique<CStringNode>(map, index);
    case ENodeType::StringReg:
        return std::make_unique<CStringRegNode>(map, index);
    case ENodeType::Register:
        return std::make_unique<CRegisterNode>(map, index);
    case ENodeType::Unavailable:
        return std::make_unique<CUnavailableNode>(map, index);
    case ENodeType::Node:
        break;
    }
    return std::make_unique<CNodeImpl>(map, index);
}

} // namespace GenApi
