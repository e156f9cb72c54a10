#include "platform/genapi/map/NodeBuilder.h"

#include "platform/genapi/kinds/BooleanNode.h"
#include "platform/genapi/kinds/CategoryNode.h"
#include "platform/genapi/kinds/CommandNode.h"
#include "platform/genapi/kinds/ConverterNode.h"
#include "platform/genapi/kinds/EnumEntryNode.h"
#include "platform/genapi/kinds/EnumerationNode.h"
#include "platform/genapi/kinds/NumberNode.h"
#include "platform/genapi/kinds/StringNode.h"
#include "platform/genapi/kinds/SwissKnifeNode.h"
#include "platform/genapi/registers/FloatRegNode.h"
#include "platform/genapi/registers/IntRegNode.h"
#include "platform/genapi/registers/PortNode.h"
#include "platform/genapi/registers/RegisterNode.h"
#include "platform/genapi/registers/RomNodes.h"
#include "platform/genapi/registers/StringRegNode.h"

#include <algorithm>
#include <utility>

namespace GenApi_3_2 {
namespace Engine {
namespace {

bool IsRegister(NodeKind kind) {
    return kind == NodeKind::IntReg || kind == NodeKind::MaskedIntReg || kind == NodeKind::FloatReg ||
           kind == NodeKind::StringReg || kind == NodeKind::Register || kind == NodeKind::ConfRom;
}

std::unique_ptr<NodeBase> MakeValueNode(NodeContext& context, const NodeRecord& record) {
    switch (record.kind) {
    case NodeKind::Integer:
        return std::make_unique<NumberNode<std::int64_t>>(context, record);
    case NodeKind::Float:
        return std::make_unique<NumberNode<double>>(context, record);
    case NodeKind::Boolean:
        return std::make_unique<BooleanNode>(context, record);
    case NodeKind::Command:
        return std::make_unique<CommandNode>(context, record);
    case NodeKind::Enumeration:
        return std::make_unique<EnumerationNode>(context, record);
    case NodeKind::EnumEntry:
        return std::make_unique<EnumEntryNode>(context, record);
    case NodeKind::String:
        return std::make_unique<StringNode>(context, record);
    case NodeKind::SwissKnife:
        return std::make_unique<SwissKnifeNode<double>>(context, record);
    case NodeKind::IntSwissKnife:
        return std::make_unique<SwissKnifeNode<std::int64_t>>(context, record);
    case NodeKind::Converter:
        return std::make_unique<ConverterNode<double>>(context, record);
    case NodeKind::IntConverter:
        return std::make_unique<ConverterNode<std::int64_t>>(context, record);
    default:
        return nullptr;
    }
}

} // namespace

std::unique_ptr<NodeBase> MakeNode(NodeContext& context, const NodeRecord& record) {
    switch (record.kind) {
    case NodeKind::IntReg:
    case NodeKind::MaskedIntReg:
        return std::make_unique<IntRegNode>(context, record);
    case NodeKind::FloatReg:
        return std::make_unique<FloatRegNode>(context, record);
    case NodeKind::StringReg:
        return std::make_unique<StringRegNode>(context, record);
    case NodeKind::Register:
    case NodeKind::ConfRom:
        return std::make_unique<RegisterNode>(context, record);
    case NodeKind::Category:
        return std::make_unique<CategoryNode>(context, record);
    case NodeKind::Port:
        return std::make_unique<PortNode>(context, record);
    case NodeKind::IntKey:
        return std::make_unique<IntKeyNode>(context, record);
    case NodeKind::TextDesc:
        return std::make_unique<TextDescNode>(context, record);
    default:
        break;
    }
    if (auto node = MakeValueNode(context, record))
        return node;
    return std::make_unique<PlainNode>(context, record);
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
