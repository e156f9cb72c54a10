// GetNodes and FreeNodes: every storable feature with its value as text.
#include "capi/Features.h"
#include "capi/Results.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

using namespace VX3::CApi;
using namespace VX3::GenICam;

namespace {

bool IsStorable(const INode* node) {
    if (node == nullptr)
        return false;
    switch (node->GetPrincipalInterfaceType()) {
    case EInterfaceType::Integer:
    case EInterfaceType::Float:
    case EInterfaceType::Boolean:
    case EInterfaceType::Enumeration:
    case EInterfaceType::String:
    case EInterfaceType::Register:
        return node->IsStreamable() && IsAvailable(node->GetAccessMode());
    default:
        return false;
    }
}

std::string EnumerationText(IEnumeration& node) {
    const long value = node.GetIntValue(false, false);
    std::string text = std::to_string(value) + "_";
    auto* entry = dynamic_cast<INode*>(node.GetEntry(value));
    if (entry != nullptr && IsAvailable(entry->GetAccessMode()))
        text += entry->GetDisplayName();
    return text;
}

std::string RegisterText(IRegister& node) {
    const long length = node.GetLength();
    if (length <= 0)
        return {};
    std::vector<unsigned char> bytes(static_cast<size_t>(length));
    node.Get(bytes.data(), length, false, false);
    std::string text;
    for (const unsigned char byte : bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, text.empty() ? "%02X" : ",%02X", byte);
        text += digits;
    }
    return text;
}

std::string ReadText(INode& node) {
    if (auto* integer = dynamic_cast<IInteger*>(&node))
        return std::to_string(integer->GetValue(false, false));
    if (auto* boolean = dynamic_cast<IBoolean*>(&node))
        return boolean->GetValue(false, false) ? "true" : "false";
    if (auto* real = dynamic_cast<IFloat*>(&node))
        return std::to_string(real->GetValue(false, false)); // fixed notation, six decimals
    if (auto* text = dynamic_cast<IString*>(&node))
        return text->GetValue(false, false);
    if (auto* enumeration = dynamic_cast<IEnumeration*>(&node))
        return EnumerationText(*enumeration);
    if (auto* bytes = dynamic_cast<IRegister*>(&node))
        return RegisterText(*bytes);
    return {};
}

// Empty for features that cannot be read, or whose reading fails: one bad feature must not cost the list.
std::string ValueText(INode& node) {
    return Guarded<std::string>(
        {}, [&] { return IsReadable(node.GetAccessMode()) ? ReadText(node) : std::string(); });
}

bool CopyOut(const std::string& text, char*& target, uint32_t& size) {
    target = static_cast<char*>(std::malloc(text.size() + 1));
    if (target == nullptr)
        return false;
    std::memcpy(target, text.c_str(), text.size() + 1);
    size = static_cast<uint32_t>(text.size() + 1);
    return true;
}

bool Fill(NodeRecord& record, INode& node) {
    record = {};
    if (CopyOut(node.GetName(), record.name, record.nameSize) &&
        CopyOut(ValueText(node), record.value, record.valueSize))
        return true;
    FreeNodes(&record, 1);
    return false;
}

} // namespace

int GetNodes(SubDevice* camera, NodeRecord* nodes, unsigned int capacity, unsigned int* count) {
    return Guarded([&] {
        const Target target = Target::Camera(camera);
        const auto map = target.Configurer() != nullptr ? target.Configurer()->GetNodeMap() : nullptr;
        if (!map || count == nullptr)
            return BadHandle;
        std::vector<INode*> storable;
        for (INode* node : map->GetNodes())
            if (Guarded<bool>(false, [&] { return IsStorable(node); }))
                storable.push_back(node);
        *count = static_cast<unsigned int>(storable.size());
        if (capacity < storable.size())
            return TooSmall;
        if (nodes == nullptr)
            return BadHandle;
        for (size_t i = 0; i < storable.size(); ++i) {
            if (!Guarded<bool>(false, [&] { return Fill(nodes[i], *storable[i]); })) {
                FreeNodes(nodes, static_cast<unsigned int>(i));
                return BadHandle;
            }
        }
        return 0;
    });
}

void FreeNodes(NodeRecord* nodes, unsigned int n) {
    for (unsigned int i = 0; nodes != nullptr && i < n; ++i) {
        std::free(nodes[i].name);
        std::free(nodes[i].value);
        nodes[i] = {};
    }
}
