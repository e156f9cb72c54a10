// Feature access by name. What a device or stream hands out while it is connected; owned by it. Never throws.
#pragma once

#include "vx3/core/IObject.h"
#include "vx3/core/Status.h"
#include "vx3/genicam/INodeMap.h"
#include "vx3/genicam/IXmlData.h"
#include "vx3/genicam/NodeValue.h"

#include <memory>
#include <string>
#include <type_traits>

namespace VX3 {

// Setters: NodeFailed when the node refuses (range, access, time-out), NotFound when there is no such node,
// it cannot be set, or the value has no form that it takes; Generic when there is no node map. A value of
// another kind is converted where nothing of it is lost ("640" or 640.0 into an integer, an entry's name into
// an enumeration, true and false into 1 and 0). Numbers out of range are clamped, with Ok: the thread's
// LastFailure says then what was set instead. GetNodeValue gives an empty value on failure. Either way
// LastFailure tells the cause, with the code of the register access that failed where one did.
class VX3_API IConfigurer : public IObject {
public:
    virtual std::shared_ptr<GenICam::INodeMap> GetNodeMap() = 0;
    virtual GenICam::NodeValue GetNodeValue(const std::string& name) = 0;
    // The same with a code: that of a register access that failed (TimeOut, a GVCP status, ...), NodeFailed
    // for any other reason of the node's, NotFound without such a node, NotSupported for one that holds no
    // value (a command), Generic without a node map. `value` is empty on failure.
    [[nodiscard]] virtual StatusCode ReadNodeValue(const std::string& name, GenICam::NodeValue& value) = 0;
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
    template <typename T>
    StatusCode SetNodeValue(const std::string& name, const T* pointer) = delete;
    // Every other integer: 640, -5, a size_t.
    template <typename T, std::enable_if_t<std::is_integral_v<T> && !std::is_same_v<T, bool>, int> = 0>
    [[nodiscard]] StatusCode SetNodeValue(const std::string& name, T value) {
        return SetNodeValue(name, GenICam::NodeValue(value));
    }
    [[nodiscard]] StatusCode SetNodeValue(const std::string& name, GenICam::NodeValue&& value) {
        return SetNodeValue(name, value);
    }
    [[nodiscard]] StatusCode SetNodeValue(const std::string& name, const GenICam::NodeValue& value) {
        return SetNodeValue(name, GenICam::NodeValue(value));
    }
    // Executes a command.
    [[nodiscard]] StatusCode SetNodeValue(const std::string& name, GenICam::CommandValue command) {
        return SetNodeValue(name, GenICam::NodeValue(command));
    }
};

} // namespace VX3
