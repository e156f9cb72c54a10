// Feature access by name. What a device or stream hands out while it is connected; owned by it. Never throws.
#pragma once

#include "vx3/core/IObject.h"
#include "vx3/core/Status.h"
#include "vx3/genicam/INodeMap.h"
#include "vx3/genicam/IXmlData.h"
#include "vx3/genicam/NodeValue.h"

#include <memory>
#include <string>

namespace VX3 {

// Setters: NodeFailed when the node refuses (range, access, time-out), NotFound when there is no such node or
// it cannot be set, Generic when there is no node map. Getters give an empty value on failure.
class VX3_API IConfigurer : public IObject {
public:
    virtual std::shared_ptr<GenICam::INodeMap> GetNodeMap() = 0;
    virtual GenICam::NodeValue GetNodeValue(const std::string& name) = 0;
    virtual IXmlData* GetXmlData() = 0;
    [[nodiscard]] virtual StatusCode SetNodeValue(const std::string& name, GenICam::NodeValue& value) = 0;
    [[nodiscard]] virtual StatusCode SetNodeValue(const std::string& name, unsigned int value) = 0;
    [[nodiscard]] virtual StatusCode SetNodeValue(const std::string& name, unsigned long long value) = 0;
    [[nodiscard]] virtual StatusCode SetNodeValue(const std::string& name, double value) = 0;
    [[nodiscard]] virtual StatusCode SetNodeValue(const std::string& name, const std::string& value) = 0;
    [[nodiscard]] virtual StatusCode SetNodeValue(const std::string& name, bool value) = 0;
    [[nodiscard]] virtual StatusCode SetNodeValue(const std::string& name, const unsigned char* data,
                                                  unsigned int size) = 0;
    // A text literal would otherwise become a boolean.
    [[nodiscard]] StatusCode SetNodeValue(const std::string& name, const char* value) {
        return SetNodeValue(name, std::string(value ? value : ""));
    }
};

} // namespace VX3
