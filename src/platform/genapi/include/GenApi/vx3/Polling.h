// How often a node map wants to be polled. An addition of this engine that is not part of the published
// interface: code that must build with another one does without this header.
#pragma once

#include "GenApi/INodeMap.h"

namespace GenApi_3_2 {
namespace vx3 {

// The shortest polling time of its nodes in milliseconds; -1 when no node has one: INodeMap::Poll has nothing
// to do then, and nobody needs to wake for it. Any thread; takes no lock.
std::int64_t GetPollingTime(const INodeMap& nodeMap);

} // namespace vx3
} // namespace GenApi_3_2
