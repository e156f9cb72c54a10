// What a feature is: its kind, access and range.
#include "capi/Features.h"
#include "capi/Results.h"

using namespace VX3::CApi;
using namespace VX3::GenICam;

namespace {

int TypeCode(EInterfaceType type) {
    switch (type) {
    case EInterfaceType::Integer:
        return VX3_NODE_INTEGER;
    case EInterfaceType::Float:
        return VX3_NODE_FLOAT;
    case EInterfaceType::Boolean:
        return VX3_NODE_BOOLEAN;
    case EInterfaceType::Command:
        return VX3_NODE_COMMAND;
    case EInterfaceType::Enumeration:
        return VX3_NODE_ENUMERATION;
    case EInterfaceType::String:
        return VX3_NODE_STRING;
    case EInterfaceType::Register:
        return VX3_NODE_REGISTER;
    default:
        return VX3_NODE_OTHER;
    }
}

// Stores one of a typed node's limits. A limit that cannot be read (time-out, no access) is a failed node.
template <typename Interface, typename T, typename Read>
int GetLimit(SubDevice* camera, const char* name, T* value, Read&& read) {
    return Guarded<int>(VX3::Status::NodeFailed, [&] {
        const Target target = Target::Camera(camera);
        auto* node = dynamic_cast<Interface*>(target.Node(name));
        if (node == nullptr || value == nullptr)
            return BadHandle;
        *value = static_cast<T>(read(*node));
        return 0;
    });
}

} // namespace

int GetNodeType(SubDevice* camera, const char* name, int* type) {
    return Guarded([&] {
        const Target target = Target::Camera(camera);
        const INode* node = target.Node(name);
        if (node == nullptr || type == nullptr)
            return BadHandle;
        *type = TypeCode(node->GetPrincipalInterfaceType());
        return 0;
    });
}

int GetNodeIsStreamable(SubDevice* camera, const char* name, bool* streamable) {
    return Guarded([&] {
        const Target target = Target::Camera(camera);
        const INode* node = target.Node(name);
        if (node == nullptr || streamable == nullptr)
            return BadHandle;
        *streamable = node->IsStreamable();
        return 0;
    });
}

int GetNodeAccessMode(SubDevice* camera, const char* name, int* mode) {
    return Guarded([&] {
        const Target target = Target::Camera(camera);
        const INode* node = target.Node(name);
        if (node == nullptr || mode == nullptr)
            return BadHandle;
        const EAccessMode access = node->GetAccessMode();
        if (access == EAccessMode::NotImplemented)
            return BadHandle;
        *mode = static_cast<int>(access);
        return 0;
    });
}

int GetNodeMaxValue_Int(SubDevice* camera, const char* name, int64_t* value) {
    return GetLimit<IInteger>(camera, name, value, [](IInteger& node) { return node.GetMax(); });
}
int GetNodeMinValue_Int(SubDevice* camera, const char* name, int64_t* value) {
    return GetLimit<IInteger>(camera, name, value, [](IInteger& node) { return node.GetMin(); });
}
int GetNodeIncValue_Int(SubDevice* camera, const char* name, int64_t* value) {
    return GetLimit<IInteger>(camera, name, value, [](IInteger& node) { return node.GetInc(); });
}
int GetNodeMaxValue_Double(SubDevice* camera, const char* name, double* value) {
    return GetLimit<IFloat>(camera, name, value, [](IFloat& node) { return node.GetMax(); });
}
int GetNodeMinValue_Double(SubDevice* camera, const char* name, double* value) {
    return GetLimit<IFloat>(camera, name, value, [](IFloat& node) { return node.GetMin(); });
}
int GetNodeIncValue_Double(SubDevice* camera, const char* name, double* value) {
    return GetLimit<IFloat>(camera, name, value, [](IFloat& node) { return node.GetInc(); });
}
