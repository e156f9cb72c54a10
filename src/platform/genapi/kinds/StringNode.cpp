#include "platform/genapi/kinds/StringNode.h"

#include <limits>

namespace GenApi_3_2 {
namespace Engine {

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

} // namespace Engine
} // namespace GenApi_3_2
