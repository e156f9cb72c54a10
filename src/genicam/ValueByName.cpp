#include "genicam/ValueByName.h"

#include "vx3/genicam/GenICamPointer.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

namespace VX3::GenICam {

namespace {

template <typename T>
GenICamPointer<T, IBase> As(INode& node) {
    return GenICamPointer<T, IBase>(&node);
}

// Foreign descriptions decide a register's length.
constexpr long MostRegisterBytes = 64L * 1024 * 1024;

NodeValue ReadRegister(INode& node) {
    const auto source = As<IRegister>(node);
    const long length = source->GetLength();
    if (length < 0 || length > MostRegisterBytes)
        return {};
    std::vector<unsigned char> bytes(static_cast<std::size_t>(length));
    source->Get(bytes.data(), length, false, false);
    return NodeValue(bytes.data(), static_cast<unsigned int>(length));
}

void WriteRegister(INode& node, const NodeValue& value) {
    const auto target = As<IRegister>(node);
    if (value.GetType() == NodeValue::Type::Buffer)
        target->Set(value.Buffer(), std::min(target->GetLength(), static_cast<long>(value.BufferLength())),
                    true);
    else
        target->Set(nullptr, 0, true);
}

StatusCode ExecuteCommand(INode& node, const NodeValue& value) {
    if (value.GetType() != NodeValue::Type::Command || value.AsCommand() != CommandValue::Execute)
        return Status::NotFound;
    As<ICommand>(node)->Execute(false);
    return Status::Ok;
}

std::string TextOf(const NodeValue& value) {
    return value.GetType() == NodeValue::Type::String ? value.AsString() : std::string();
}

} // namespace

// sleep_for is monotonic and resumes after signals.
StatusCode Delay(const NodeValue& value) {
    if (value.GetType() == NodeValue::Type::Integer && value.AsInteger() > 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(value.AsInteger()));
    return Status::Ok;
}

NodeValue ReadByType(INode& node) {
    switch (node.GetPrincipalInterfaceType()) {
    case EInterfaceType::Integer:
        return NodeValue(As<IInteger>(node)->GetValue(false, false));
    case EInterfaceType::Boolean:
        return NodeValue(As<IBoolean>(node)->GetValue(false, false));
    case EInterfaceType::Float:
        return NodeValue(As<IFloat>(node)->GetValue(false, false));
    case EInterfaceType::String:
        return NodeValue(As<IString>(node)->GetValue(false, false));
    case EInterfaceType::Register:
        return ReadRegister(node);
    case EInterfaceType::Category:
        return NodeValue(As<ICategory>(node)->ToString(false, false));
    case EInterfaceType::Enumeration:
        return NodeValue(As<IEnumeration>(node)->GetIntValue(false, false));
    case EInterfaceType::EnumEntry:
        return NodeValue(As<IEnumEntry>(node)->GetValue());
    default:
        return {};
    }
}

StatusCode WriteByType(INode& node, const NodeValue& value) {
    switch (node.GetPrincipalInterfaceType()) {
    case EInterfaceType::Integer:
        As<IInteger>(node)->SetValue(value.AsInteger(), true);
        return Status::Ok;
    case EInterfaceType::Boolean:
        As<IBoolean>(node)->SetValue(value.AsBoolean(), true);
        return Status::Ok;
    case EInterfaceType::Command:
        return ExecuteCommand(node, value);
    case EInterfaceType::Float:
        As<IFloat>(node)->SetValue(value.AsFloat(), true);
        return Status::Ok;
    case EInterfaceType::String:
        As<IString>(node)->SetValue(TextOf(value), true);
        return Status::Ok;
    case EInterfaceType::Register:
        WriteRegister(node, value);
        return Status::Ok;
    case EInterfaceType::Enumeration:
        As<IEnumeration>(node)->SetIntValue(value.AsInteger(), true);
        return Status::Ok;
    default:
        return Status::NotFound;
    }
}

} // namespace VX3::GenICam
