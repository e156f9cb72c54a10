#include "platform/genapi/nodes/FloatFace.h"

#include "platform/genapi/base/ValueText.h"

namespace GenApi_3_2 {
namespace Engine {

bool FloatFace::Take(const Element& element) {
    switch (element.id) {
    case ElementId::DisplayNotation:
        notation_ = DisplayNotationOfText(element.text);
        return true;
    case ElementId::DisplayPrecision:
        precision_ = ParseInteger(element.text);
        return true;
    default:
        return NumberFace::Take(element);
    }
}

bool FloatFace::HasInc() {
    return Locked([&] { return GetFloatRange().inc.has_value(); });
}

EIncMode FloatFace::GetIncMode() {
    return Locked([&] {
        const FloatRange range = GetFloatRange();
        if (range.validValues)
            return listIncrement;
        return range.inc ? fixedIncrement : noIncrement;
    });
}

double FloatFace::GetInc() {
    return Locked([&] {
        const FloatRange range = GetFloatRange();
        if (!range.inc)
            Fail<GenICam_3_2::RuntimeException>(*this, "has no increment");
        return *range.inc;
    });
}

IInteger* FloatFace::GetIntAlias() {
    return dynamic_cast<IInteger*>(GetCastAlias());
}
IEnumeration* FloatFace::GetEnumAlias() {
    return dynamic_cast<IEnumeration*>(GetCastAlias());
}

gcstring FloatFace::ShownText(bool ignoreCache) {
    return FloatText(GetFloat(ignoreCache), notation_, precision_).c_str();
}

void FloatFace::TakeShownText(const gcstring& text, bool verify) {
    const auto value = ParseFloat(std::string_view(text.c_str(), text.size()));
    if (!value)
        Fail<GenICam_3_2::InvalidArgumentException>(*this,
                                                    std::string("'") + text.c_str() + "' is not a number");
    SetFloat(*value, verify);
}

} // namespace Engine
} // namespace GenApi_3_2
