#include "platform/genapi/FloatFace.h"

#include "platform/genapi/NumberText.h"
#include "platform/genapi/ValueText.h"

#include <algorithm>

namespace GenApi_3_2 {
namespace Engine {

using GenICam_3_2::InvalidArgumentException;
using GenICam_3_2::RuntimeException;

bool FloatFace::Take(const Element& element) {
    switch (element.id) {
    case ElementId::Representation:
        representation_ = RepresentationOfText(element.text);
        return true;
    case ElementId::DisplayNotation:
        notation_ = DisplayNotationOfText(element.text);
        return true;
    case ElementId::DisplayPrecision:
        precision_ = ParseInteger(element.text);
        return true;
    default:
        return false;
    }
}

void FloatFace::SetValue(double Value, bool Verify) {
    Write(Verify, [&] { SetFloat(Value, Verify); });
}

IFloat& FloatFace::operator=(double Value) {
    SetValue(Value);
    return *this;
}

double FloatFace::GetValue(bool Verify, bool IgnoreCache) {
    const Operation operation(Map());
    if (Verify)
        RequireReadable();
    return GetFloat(IgnoreCache);
}

FloatRange FloatFace::GetFloatRange() {
    Enter();
    FloatRange range = ReadRange();
    if (imposedMin_)
        range.min = std::max(range.min, *imposedMin_);
    if (imposedMax_)
        range.max = std::min(range.max, *imposedMax_);
    return range;
}

double FloatFace::GetMin() {
    return Locked([&] { return GetFloatRange().min; });
}
double FloatFace::GetMax() {
    return Locked([&] { return GetFloatRange().max; });
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
            Fail<RuntimeException>(*this, "has no increment");
        return *range.inc;
    });
}

const double_autovector_t FloatFace::GetListOfValidValues(bool bounded) {
    return Locked([&] {
        const FloatRange range = GetFloatRange();
        double_autovector_t values;
        if (range.validValues)
            for (const double value : *range.validValues)
                if (!bounded || (value >= range.min && value <= range.max))
                    values.push_back(value);
        return values;
    });
}

gcstring FloatFace::GetUnit() const {
    const std::string_view unit = Map().Text().Text(Record(), ElementId::Unit);
    return gcstring(unit.data(), unit.size());
}

IInteger* FloatFace::GetIntAlias() {
    return dynamic_cast<IInteger*>(GetCastAlias());
}
IEnumeration* FloatFace::GetEnumAlias() {
    return dynamic_cast<IEnumeration*>(GetCastAlias());
}

void FloatFace::ImposeMin(double Value) {
    Locked([&] {
        imposedMin_ = Value;
        Changed();
        Map().FireChanged();
    });
}

void FloatFace::ImposeMax(double Value) {
    Locked([&] {
        imposedMax_ = Value;
        Changed();
        Map().FireChanged();
    });
}

gcstring FloatFace::ShownText(bool ignoreCache) {
    return FloatText(GetFloat(ignoreCache), notation_, precision_).c_str();
}

void FloatFace::TakeShownText(const gcstring& text, bool verify) {
    const auto value = ParseFloat(Strip(std::string_view(text.c_str(), text.size())));
    if (!value)
        Fail<InvalidArgumentException>(*this, std::string("'") + text.c_str() + "' is not a number");
    SetFloat(*value, verify);
}

} // namespace Engine
} // namespace GenApi_3_2
