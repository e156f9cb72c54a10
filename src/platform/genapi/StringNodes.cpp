#include "platform/genapi/StringNodes.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

using GenICam_3_2::OutOfRangeException;

bool StringNode::Take(const Element& element) {
    if (element.id == ElementId::Value)
        text_ = element.text;
    else if (element.id == ElementId::pValue)
        target_ = Require(element, Role::Target);
    else
        return false;
    return true;
}

std::int64_t StringNode::MaxLength() {
    auto* inner = dynamic_cast<TextFace*>(target_);
    return inner ? inner->MaxLength() : std::numeric_limits<std::int64_t>::max();
}

std::string StringNode::ReadText(bool ignoreCache) {
    return target_ ? target_->GetText(ignoreCache) : text_;
}

void StringNode::WriteText(const std::string& value, bool verify) {
    if (target_)
        return target_->SetText(value, verify);
    text_ = value;
    Changed();
}

std::int64_t StringRegNode::MaxLength() {
    return static_cast<std::int64_t>(core_.Length(*this));
}

std::string StringRegNode::ReadText(bool ignoreCache) {
    if (isKnown_ && !ignoreCache)
        return text_;
    std::vector<std::uint8_t> bytes(core_.Length(*this));
    ReadDevice(bytes.data(), bytes.size());
    std::string text(bytes.begin(), std::find(bytes.begin(), bytes.end(), 0));
    if (isKnown_ && text != text_)
        Map().GetCache().Refreshed(*this);
    text_ = text;
    isKnown_ = IsCachable();
    return text;
}

void StringRegNode::WriteText(const std::string& value, bool) {
    // A NUL in the middle would hide what follows.
    const std::string visible = value.substr(0, value.find('\0'));
    std::vector<std::uint8_t> bytes(core_.Length(*this), 0);
    if (visible.size() > bytes.size())
        Fail<OutOfRangeException>(*this, "takes at most " + std::to_string(bytes.size()) + " bytes, not " +
                                             std::to_string(visible.size()));
    std::copy(visible.begin(), visible.end(), bytes.begin());
    WriteDevice(bytes.data(), bytes.size());
    text_ = visible;
    isKnown_ = IsCachable() && KeepsWritten();
}

} // namespace Engine
} // namespace GenApi_3_2
