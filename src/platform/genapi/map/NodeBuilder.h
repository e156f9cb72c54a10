// Which class stands for which node type.
#pragma once

#include "platform/genapi/nodes/NodeBase.h"

#include <memory>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

class Cache;

std::unique_ptr<NodeBase> MakeNode(NodeContext& context, const NodeRecord& record);

// Tells the cache which registers lie at the same place; called once their elements were read.
void ShareAddresses(const std::vector<std::unique_ptr<NodeBase>>& nodes, Cache& cache);

} // namespace Engine
} // namespace GenApi_3_2
