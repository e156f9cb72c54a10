#include "platform/genapi/registers/RomNodes.h"

#include "platform/genapi/base/NumberText.h"
#include "platform/genapi/registers/ConfigRom.h"
#include "platform/genapi/registers/RegisterNode.h"

namespace GenApi_3_2 {
namespace Engine {

using GenICam_3_2::RuntimeException;

bool RomKey::Take(NodeBase& owner, const Element& element) {
    if (element.id == ElementId::p1212Parser) {
        NodeBase* node = owner.Require(element, Role::Target);
        rom_ = dynamic_cast<RegisterNode*>(node);
        if (node && !rom_)
            owner.SetBroken(&element, "p1212Parser names '" + std::string(element.text) +
                                          "', which is no configuration memory");
        return true;
    }
    if (element.id != ElementId::Key)
        return false;
    const auto key = ParseInteger(element.text);
    if (key && *key >= 0 && *key <= 255)
        key_ = static_cast<int>(*key);
    else
        owner.SetBroken(&element, "Key '" + std::string(element.text) + "' is no key");
    return true;
}

void RomKey::Finish(NodeBase& owner) {
    if (!rom_ || key_ < 0)
        owner.SetBroken(nullptr, "has no configuration memory or no key");
}

EAccessMode RomKey::Access() const {
    return rom_ ? rom_->AccessMode() : NA;
}

std::int64_t RomKey::ReadValue(const NodeBase& owner, bool ignoreCache) const {
    const auto& bytes = rom_->Bytes(ignoreCache);
    if (const auto value = FindRomKey(bytes.data(), bytes.size(), static_cast<std::uint8_t>(key_)))
        return *value;
    Fail<RuntimeException>(owner, "the configuration memory has no key " + std::to_string(key_));
}

std::string RomKey::ReadText(const NodeBase& owner, bool ignoreCache) const {
    const auto& bytes = rom_->Bytes(ignoreCache);
    if (const auto text = FindRomText(bytes.data(), bytes.size(), static_cast<std::uint8_t>(key_)))
        return *text;
    Fail<RuntimeException>(owner, "the configuration memory has no text with key " + std::to_string(key_));
}

} // namespace Engine
} // namespace GenApi_3_2
