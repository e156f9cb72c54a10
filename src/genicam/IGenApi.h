// GenICam access of one object: its description, its node map and values by name. Owned by the object's
// configurer.
#pragma once

#include "vx3/core/Status.h"
#include "vx3/genicam/INodeMap.h"
#include "vx3/genicam/IXmlData.h"
#include "vx3/genicam/NodeValue.h"

#include <memory>
#include <string>

namespace VX3 {

// The value operations let GenApi's exceptions (and the port's texts) through; the configurer turns them into
// codes.
class IGenApi {
public:
    virtual ~IGenApi() = default;
    // Not owned; null when there is no description.
    virtual IXmlData* GetXmlData() = 0;
    // Empty when the description could not be used.
    virtual std::shared_ptr<GenICam::INodeMap> GetNodeMap() = 0;
    // Why it is empty, in words.
    virtual std::string Failure() const = 0;
    // Empty when there is no node map or no such node, and for nodes that hold no value.
    virtual GenICam::NodeValue GetNodeValue(const std::string& name) = 0;
    // Generic without a node map; NotFound without such a node or for a type that cannot be set.
    [[nodiscard]] virtual StatusCode SetNodeValue(const std::string& name, GenICam::NodeValue& value) = 0;
};

} // namespace VX3
