#include "platform/genapi/kinds/BooleanNode.h"

#include "platform/genapi/base/NumberText.h"

namespace GenApi_3_2 {
namespace Engine {

using GenICam_3_2::InvalidArgumentException;

bool BooleanNode::Take(const Element& element) {
    if (element.id == ElementId::OnValue || element.id == ElementId::OffValue) {
        if (const auto value = ParseInteger(element.text))
            (element.id == ElementId::OnValue ? onValue_ : offValue_) = *value;
        else
            Report(element, std::string(ToText(element.id)) + " is no number");
        return true;
    }
    if (element.id != ElementId::Value)
        return source_.Take(*this, element);
    // Constants are "true" and "false" here, or numbers.
    Element number = element;
    if (const auto value = ParseBoolean(element.text); value && !ParseInteger(element.text))
        number.text = *value ? "1" : "0";
    return source_.Take(*this, number);
}

void BooleanNode::SetValue(bool Value, bool Verify) {
    Write(Verify, [&] { SetInteger(Value ? 1 : 0, Verify); });
}

IBoolean& BooleanNode::operator=(bool Value) {
    SetValue(Value);
    return *this;
}

bool BooleanNode::GetValue(bool Verify, bool IgnoreCache) const {
    const Operation operation(Context());
    if (Verify)
        RequireReadable();
    // Reading fills the cache, which is no part of the node's visible state.
    return const_cast<BooleanNode*>(this)->GetInteger(IgnoreCache) != 0;
}

IntegerRange BooleanNode::GetRange() {
    IntegerRange range;
    range.min = 0;
    range.max = 1;
    return range;
}

std::int64_t BooleanNode::ReadInteger(bool ignoreCache) {
    const std::int64_t value = source_.Read(ignoreCache);
    if (value == onValue_ || value == offValue_)
        return value == onValue_ ? 1 : 0;
    return value != 0 ? 1 : 0; // devices answer with other values than the two now and then
}

void BooleanNode::WriteInteger(std::int64_t value, bool verify) {
    source_.Write(*this, value != 0 ? onValue_ : offValue_, verify);
}

gcstring BooleanNode::ShownText(bool ignoreCache) {
    return GetInteger(ignoreCache) != 0 ? "1" : "0";
}

void BooleanNode::TakeShownText(const gcstring& text, bool verify) {
    const auto value = ParseBoolean(Strip(std::string_view(text.c_str(), text.size())));
    if (!value)
        Fail<InvalidArgumentException>(*this,
                                       std::string("'") + text.c_str() + "' is neither true nor false");
    SetInteger(*value ? 1 : 0, verify);
}

} // namespace Engine
} // namespace GenApi_3_2
