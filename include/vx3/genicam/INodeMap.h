// The features of one camera, interface or stream.
#pragma once

#include "vx3/genicam/IGenIObj.h"
#include "vx3/genicam/INode.h"

#include <memory>
#include <string>
#include <vector>

namespace VX3::GenICam {

class VX3_API INodeMap {
public:
    virtual ~INodeMap() = default;
    // Every node in the description's order; null where a node's type has no wrapper (ports).
    virtual const std::vector<INode*>& GetNodes() const = 0;
    // Exact, case-sensitive; null when absent.
    virtual INode* GetNode(const std::string& name) const = 0;
    virtual void InvalidateNodes() const = 0;
    virtual std::string GetDeviceName() = 0;
    // Tells polled nodes that `elapsedMs` milliseconds have passed.
    virtual void Poll(long elapsedMs) = 0;
    virtual std::uint64_t GetNumNodes() const = 0;
    virtual bool Connect(std::weak_ptr<IGenIObj> owner, const std::string& portName) const = 0;
    virtual bool Connect(std::weak_ptr<IGenIObj> owner) const = 0;
};

} // namespace VX3::GenICam
