// When a node's value is to be read anew although nothing was written. Part of every node, used with the
// map's lock held.
#pragma once

#include "platform/genapi/description/Description.h"

#include <cstdint>

namespace GenApi_3_2 {
namespace Engine {

class NodeBase;

class NodePolling {
public:
    void Take(NodeBase& owner, const Element& element);
    // Milliseconds; -1 for a node that is not polled.
    std::int64_t Time() const { return time_; }
    // Adds milliseconds of a polled node. True, and the time starts anew, when it is due and nothing blocks
    // it.
    bool Advance(std::int64_t elapsed);

private:
    bool IsBlocked() const;

    std::int64_t time_ = -1;
    std::int64_t sinceLast_ = 0;
    NodeBase* block_ = nullptr;
};

} // namespace Engine
} // namespace GenApi_3_2
