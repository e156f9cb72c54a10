// A function to call when a node changes, and the node to call it with. Owned by that node's wrapper.
#pragma once

#include "vx3/genicam/INode.h"

#include <functional>
#include <utility>

namespace VX3::GenICam {

class Callback {
public:
    Callback(INode* node, std::function<void(INode*)> function)
        : node_(node), function_(std::move(function)) {}
    virtual ~Callback() = default;

    void operator()() const {
        if (function_)
            function_(node_);
    }

private:
    INode* node_;
    std::function<void(INode*)> function_;
};

} // namespace VX3::GenICam
