#include "genicam/ValueByName.h"

#include "genicam/ValueConversion.h"
#include "vx3/core/LastFailure.h"
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

StatusCode Refuse(const INode& node, const NodeValue& value, const char* wanted) {
    return SetLastFailure(Status::NotFound, node.GetName() + ": " + Shown(value) + " is no " + wanted);
}

// Writes the value in the form that the node takes; a value that has none is refused.
template <typename Form, typename Write>
StatusCode WriteAs(const INode& node, const NodeValue& value, const std::optional<Form>& form,
                   const char* wanted, Write&& write) {
    if (!form)
        return Refuse(node, value, wanted);
    write(*form);
    return Status::Ok;
}

StatusCode WriteRegister(INode& node, const NodeValue& value) {
    if (value.GetType() != NodeValue::Type::Buffer)
        return Refuse(node, value, "buffer of bytes");
    const auto target = As<IRegister>(node);
    const long length = target->GetLength();
    const auto given = static_cast<long>(value.BufferLength());
    target->Set(value.Buffer(), std::min(length, given), true);
    if (given > length)
        SetLastFailure(Status::Ok, node.GetName() + ": " + std::to_string(given) +
                                       " bytes were given, the first " + std::to_string(length) +
                                       " were written");
    return Status::Ok;
}

// By symbolic name, or by number.
StatusCode WriteEnumeration(INode& node, const NodeValue& value) {
    const auto target = As<IEnumeration>(node);
    if (value.GetType() == NodeValue::Type::String) {
        const std::vector<IEnumEntry*> entries = target->GetEntries();
        const auto named = std::find_if(entries.begin(), entries.end(), [&](const IEnumEntry* entry) {
            return entry->GetSymbolic() == value.AsString();
        });
        if (named != entries.end()) {
            target->FromString(value.AsString(), true);
            return Status::Ok;
        }
    }
    return WriteAs(node, value, ToInteger(value), "entry of this enumeration",
                   [&](long number) { target->SetIntValue(number, true); });
}

StatusCode ExecuteCommand(INode& node, const NodeValue& value) {
    if (value.GetType() != NodeValue::Type::Command || value.AsCommand() != CommandValue::Execute)
        return Refuse(node, value, "execution of a command");
    As<ICommand>(node)->Execute(false);
    return Status::Ok;
}

} // namespace

// In slices, since nobody could wake a sleep of weeks; sleep_for is monotonic and resumes after signals.
StatusCode Delay(const NodeValue& value, const std::weak_ptr<IGenIObj>& owner) {
    using std::chrono::milliseconds;
    using Clock = std::chrono::steady_clock;
    constexpr milliseconds Slice(20);
    const long wanted = value.GetType() == NodeValue::Type::Integer ? value.AsInteger() : 0;
    const auto start = Clock::now();
    for (milliseconds left(wanted); left.count() > 0;
         left = milliseconds(wanted) - std::chrono::duration_cast<milliseconds>(Clock::now() - start)) {
        const std::shared_ptr<IGenIObj> reached = owner.lock();
        if (!reached || !reached->IsReachable())
            return Status::NotConnected;
        std::this_thread::sleep_for(std::min(left, Slice));
    }
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
        return WriteAs(node, value, ToInteger(value), "integer",
                       [&](long form) { As<IInteger>(node)->SetValue(form, true); });
    case EInterfaceType::Boolean:
        return WriteAs(node, value, ToBoolean(value), "boolean",
                       [&](bool form) { As<IBoolean>(node)->SetValue(form, true); });
    case EInterfaceType::Command:
        return ExecuteCommand(node, value);
    case EInterfaceType::Float:
        return WriteAs(node, value, ToReal(value), "number",
                       [&](double form) { As<IFloat>(node)->SetValue(form, true); });
    case EInterfaceType::String:
        return WriteAs(node, value, ToText(value), "text",
                       [&](const std::string& form) { As<IString>(node)->SetValue(form, true); });
    case EInterfaceType::Register:
        return WriteRegister(node, value);
    case EInterfaceType::Enumeration:
        return WriteEnumeration(node, value);
    default:
        return SetLastFailure(Status::NotFound, node.GetName() + ": features of this kind cannot be set");
    }
}

} // namespace VX3::GenICam
