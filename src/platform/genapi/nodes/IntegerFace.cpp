#include "platform/genapi/nodes/IntegerFace.h"

#include "platform/genapi/base/ValueText.h"

#include <algorithm>

namespace GenApi_3_2 {
namespace Engine {

IntegerRange IntegerFace::GetRange() {
    IntegerRange range = BoundedRange();
    range.inc = std::max<std::int64_t>(range.inc, 1);
    return range;
}

std::int64_t IntegerFace::GetInc() {
    return Locked([&] { return GetRange().inc; });
}

EIncMode IntegerFace::GetIncMode() {
    return Locked([&] { return GetRange().validValues ? listIncrement : fixedIncrement; });
}

IFloat* IntegerFace::GetFloatAlias() {
    return dynamic_cast<IFloat*>(GetCastAlias());
}

gcstring IntegerFace::ShownText(bool ignoreCache) {
    return IntegerText(GetInteger(ignoreCache), Representation()).c_str();
}

void IntegerFace::TakeShownText(const gcstring& text, bool verify) {
    const auto value = IntegerOfText(std::string_view(text.c_str(), text.size()));
    if (!value)
        Fail<GenICam_3_2::InvalidArgumentException>(*this,
                                                    std::string("'") + text.c_str() + "' is not an integer");
    SetInteger(*value, verify);
}

} // namespace Engine
} // namespace GenApi_3_2
