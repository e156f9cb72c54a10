#include "features/FeatureText.h"

#include "base/Interrupt.h"
#include "base/ToolError.h"
#include "features/ValueParser.h"
#include "vx3/core/LastFailure.h"
#include "vx3/genicam/GenICamPointer.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

namespace VX3::Tool {

using namespace VX3::GenICam;

namespace {

template <typename T>
GenICamPointer<T, IBase> As(INode& node) {
    return GenICamPointer<T, IBase>(&node);
}

constexpr long MostRegisterBytes = 1024L * 1024;

std::string RegisterText(INode& node, bool ignoreCache) {
    const auto source = As<IRegister>(node);
    const long length = std::max(source->GetLength(), 0L);
    if (length > MostRegisterBytes)
        throw ToolError("the register has " + std::to_string(length) + " bytes, which is too much to show");
    std::vector<unsigned char> bytes(static_cast<std::size_t>(length));
    source->Get(bytes.data(), length, false, ignoreCache);
    std::string text = "0x";
    for (const unsigned char byte : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof(digits), "%02X", static_cast<unsigned int>(byte));
        text += digits;
    }
    return text;
}

SetResult Judge(const std::string& asked, const std::string& before, const std::string& held) {
    if (held == asked)
        return {SetResult::Kind::Taken, held, {}};
    return {held == before ? SetResult::Kind::Refused : SetResult::Kind::Adjusted, held, {}};
}

bool IsReadableNode(const INode& node) {
    return IsReadable(node.GetAccessMode());
}

std::string BeforeText(INode& node) {
    return IsReadableNode(node) ? ReadText(node, false, true) : std::string();
}

// The text a value reads back as, when the feature takes it unchanged.
std::string WriteByType(INode& node, const std::string& text) {
    switch (node.GetPrincipalInterfaceType()) {
    case EInterfaceType::Integer: {
        const long value = ParseIntegerIn(text, As<IInteger>(node)->GetUnit());
        As<IInteger>(node)->SetValue(value, true);
        return std::to_string(value);
    }
    case EInterfaceType::Float: {
        const double value = ParseFloatIn(text, As<IFloat>(node)->GetUnit());
        As<IFloat>(node)->SetValue(value, true);
        return NumberText(value);
    }
    case EInterfaceType::Boolean: {
        const bool value = ParseBoolean(text);
        As<IBoolean>(node)->SetValue(value, true);
        return value ? "true" : "false";
    }
    case EInterfaceType::Enumeration: {
        const long value = ParseEnumeration(*As<IEnumeration>(node).Get(), text);
        As<IEnumeration>(node)->SetIntValue(value, true);
        return text;
    }
    case EInterfaceType::String:
        As<IString>(node)->SetValue(text, true);
        return text;
    case EInterfaceType::Register: {
        const std::vector<unsigned char> bytes = ParseBytes(text);
        const auto target = As<IRegister>(node);
        const long length = target->GetLength();
        if (static_cast<long>(bytes.size()) != length)
            throw ToolError("the register has " + std::to_string(length) + " bytes, not " +
                            std::to_string(bytes.size()));
        target->Set(bytes.data(), length, true);
        return RegisterText(node, false);
    }
    case EInterfaceType::Command:
        throw ToolError("it is a command; execute it with 'vx3 run'");
    default:
        throw ToolError("it has no value that could be set");
    }
}

// Cameras keep floating-point values as scaled integers: what differs in the ninth digit is the same.
bool SameNumber(const std::string& a, const std::string& b) {
    const double left = std::strtod(a.c_str(), nullptr);
    const double right = std::strtod(b.c_str(), nullptr);
    return std::abs(left - right) <= 1e-9 * std::max(std::abs(left), std::abs(right));
}

} // namespace

std::string NumberText(double value) {
    char text[64];
    const double magnitude = std::abs(value);
    const bool plain = value == 0.0 || (magnitude >= 1e-5 && magnitude < 1e15);
    for (int digits = 0; digits <= 20; ++digits) {
        if (plain)
            std::snprintf(text, sizeof(text), "%.*f", digits, value);
        else
            std::snprintf(text, sizeof(text), "%.*g", digits, value);
        if (std::strtod(text, nullptr) == value)
            break;
    }
    return text;
}

bool HasValue(EInterfaceType type) {
    switch (type) {
    case EInterfaceType::Integer:
    case EInterfaceType::Boolean:
    case EInterfaceType::Float:
    case EInterfaceType::String:
    case EInterfaceType::Register:
    case EInterfaceType::Enumeration:
        return true;
    default:
        return false;
    }
}

std::string ReadText(INode& node, bool ignoreCache, bool exact) {
    switch (node.GetPrincipalInterfaceType()) {
    case EInterfaceType::Integer:
        return exact ? std::to_string(As<IInteger>(node)->GetValue(false, ignoreCache))
                     : As<IInteger>(node)->ToString(false, ignoreCache);
    case EInterfaceType::Float:
        return NumberText(As<IFloat>(node)->GetValue(false, ignoreCache));
    case EInterfaceType::Boolean:
        return As<IBoolean>(node)->GetValue(false, ignoreCache) ? "true" : "false";
    case EInterfaceType::Register:
        return RegisterText(node, ignoreCache);
    case EInterfaceType::Enumeration:
    case EInterfaceType::String:
        return As<IValue>(node)->ToString(false, ignoreCache);
    default:
        return {};
    }
}

void InWords(const std::string& what, const std::function<void()>& body) {
    const std::string prefix = what.empty() ? what : what + ": ";
    try {
        body();
    } catch (const ToolError& error) {
        throw error.Behind(prefix);
    } catch (const std::exception& error) {
        throw ToolError(prefix + error.what(), Status::NodeFailed);
    } catch (const char* text) {
        throw ToolError(prefix + text, Status::NodeFailed);
    }
}

SetResult WriteText(INode& node, const std::string& text) {
    SetResult result;
    InWords(node.GetName(), [&] {
        const EAccessMode mode = node.GetAccessMode();
        if (!IsAvailable(mode))
            throw ToolError("it is not available now", Status::NodeFailed);
        if (!IsWritable(mode))
            throw ToolError("it is read-only now", Status::NodeFailed);
        const std::string before = BeforeText(node);
        const std::uint64_t told = FailureCount();
        const std::string asked = WriteByType(node, text);
        const bool moved = FailureCount() != told && LastFailure().code == Status::Ok;
        if (moved)
            result = {SetResult::Kind::Adjusted, {}, LastFailure().text};
        if (!IsReadableNode(node))
            return;
        const std::string held = ReadText(node, true, true);
        result = moved && held != asked ? SetResult{SetResult::Kind::Adjusted, held, result.told}
                                        : Judge(asked, before, held);
        if (node.GetPrincipalInterfaceType() == EInterfaceType::Float && SameNumber(asked, result.held))
            result.kind = SetResult::Kind::Taken;
        if (node.GetPrincipalInterfaceType() == EInterfaceType::Enumeration &&
            As<IEnumeration>(node)->GetIntValue(false, false) ==
                ParseEnumeration(*As<IEnumeration>(node).Get(), text))
            result.kind = SetResult::Kind::Taken;
    });
    return result;
}

bool Execute(INode& node, unsigned int timeoutMs) {
    bool done = false;
    InWords(node.GetName(), [&] {
        if (node.GetPrincipalInterfaceType() != EInterfaceType::Command)
            throw ToolError("it is no command");
        if (!IsWritable(node.GetAccessMode()))
            throw ToolError("it cannot be executed now", Status::NodeFailed);
        const auto command = As<ICommand>(node);
        command->Execute(true);
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
        while (!(done = command->IsDone(false)) && !Interrupted() &&
               std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
    });
    return done;
}

} // namespace VX3::Tool
