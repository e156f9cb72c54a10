#include "platform/genapi/NodeBuilder.h"

#include "platform/genapi/BooleanNode.h"
#include "platform/genapi/CategoryNode.h"
#include "platform/genapi/CommandNode.h"
#include "platform/genapi/ConverterNodes.h"
#include "platform/genapi/EnumEntryNode.h"
#include "platform/genapi/EnumerationNode.h"
#include "platform/genapi/FloatNode.h"
#include "platform/genapi/FloatRegNode.h"
#include "platform/genapi/FormulaNodes.h"
#include "platform/genapi/IntRegNode.h"
#include "platform/genapi/IntegerNode.h"
#include "platform/genapi/NodeMap.h"
#include "platform/genapi/PortNode.h"
#include "platform/genapi/RegisterNode.h"
#include "platform/genapi/RomNodes.h"
#include "platform/genapi/StringNodes.h"

#include <algorithm>
#include <utility>

namespace GenApi_3_2 {
namespace Engine {
namespace {

bool IsRegister(NodeKind kind) {
    return kind == NodeKind::IntReg || kind == NodeKind::MaskedIntReg || kind == NodeKind::FloatReg ||
           kind == NodeKind::StringReg || kind == NodeKind::Register || kind == NodeKind::ConfRom;
}

std::unique_ptr<NodeBase> MakeValueNode(NodeMap& map, const NodeRecord& record) {
    switch (record.kind) {
    case NodeKind::Integer:
        return std::make_unique<IntegerNode>(map, record);
    case NodeKind::Float:
        return std::make_unique<FloatNode>(map, record);
    case NodeKind::Boolean:
        return std::make_unique<BooleanNode>(map, record);
    case NodeKind::Command:
        return std::make_unique<CommandNode>(map, record);
    case NodeKind::Enumeration:
        return std::make_unique<EnumerationNode>(map, record);
    case NodeKind::EnumEntry:
        return std::make_unique<EnumEntryNode>(map, record);
    case NodeKind::String:
        return std::make_unique<StringNode>(map, record);
    case NodeKind::SwissKnife:
        return std::make_unique<SwissKnifeNode>(map, record);
    case NodeKind::IntSwissKnife:
        return std::make_unique<IntSwissKnifeNode>(map, record);
    case NodeKind::Converter:
        return std::make_unique<ConverterNode>(map, record);
    case NodeKind::IntConverter:
        return std::make_unique<IntConverterNode>(map, record);
    default:
        return nullptr;
    }
}

} // namespace

std::unique_ptr<NodeBase> MakeNode(NodeMap& map, const NodeRecord& record) {
    switch (record.kind) {
    case NodeKind::IntReg:
    case NodeKind::MaskedIntReg:
        return std::make_unique<IntRegNode>(map, record);
    case NodeKind::FloatReg:
        return std::make_unique<FloatRegNode>(map, record);
    case NodeKind::StringReg:
        return std::make_unique<StringRegNode>(map, record);
    case NodeKind::Register:
    case NodeKind::ConfRom:
        return std::make_unique<RegisterNode>(map, record);
    case NodeKind::Category:
        return std::make_unique<CategoryNode>(map, record);
    case NodeKind::Port:
        return std::make_unique<PortNode>(map, record);
    case NodeKind::IntKey:
        return std::make_unique<IntKeyNode>(map, record);
    case NodeKind::TextDesc:
        return std::make_unique<TextDescNode>(map, record);
    default:
        break;
    }
    if (auto node = MakeValueNode(map, record))
        return node;
    return std::make_unique<PlainNode>(map, record);
}

void ShareAddresses(const std::vector<std::unique_ptr<NodeBase>>& nodes, Cache& cache) {
    std::vector<std::pair<std::uint64_t, NodeBase*>> places;
    for (const auto& node : nodes)
        if (const auto* place =
                !IsRegister(node->Record().kind) ? nullptr : dynamic_cast<const RegisterPlace*>(node.get());
            place && !node->IsBroken())
            places.emplace_back(place->Core().PlaceHash(), node.get());
    std::sort(places.begin(), places.end(), [](const auto& left, const auto& right) {
        return left.first != right.first ? left.first < right.first
                                         : &left.second->Record() < &right.second->Record();
    });
    std::uint32_t group = 0; // 0 stands for none
    for (std::size_t i = 0; i < places.size(); ++i) {
        const bool isFirst = i == 0 || places[i - 1].first != places[i].first;
        const bool isLast = i + 1 == places.size() || places[i + 1].first != places[i].first;
        if (isFirst && isLast)
            continue;
        if (isFirst)
            ++group;
        cache.ShareAddress(group, *places[i].second);
    }
}

} // namespace Engine
} // namespace GenApi_3_2
