#include "platform/genapi/IntegerFace.h"

#include "platform/genapi/ValueText.h"

#include <algorithm>

namespace GenApi_3_2 {
namespace Engine {

using GenICam_3_2::InvalidArgumentException;

bool IntegerFace::Take(const Element& element) {
    if (element.id != ElementId::Representation)
        return false;
    representation_ = RepresentationOfText(element.text);
    return true;
}

void IntegerFace::SetValue(std::int64_t Value, bool Verify) {
    Write(Verify, [&] { SetInteger(Value, Verify); });
}

IInteger& IntegerFace::operator=(std::int64_t Value) {
    SetValue(Value);
    return *this;
}

std::int64_t IntegerFace::GetValue(bool Verify, bool IgnoreCache) {
    const Operation operation(Map());
    if (Verify)
        RequireReadable();
    return GetInteger(IgnoreCache);
}

IntegerRange IntegerFace::GetRange() {
    Enter();
    IntegerRange range = ReadRange();
    if (imposedMin_)
        range.min = std::max(range.min, *imposedMin_);
    if (imposedMax_)
        range.max = std::min(range.max, *imposedMax_);
    range.inc = std::max<std::int64_t>(range.inc, 1);
    return range;
}

std::int64_t IntegerFace::GetMin() {
    return Locked([&] { return GetRange().min; });
}
std::int64_t IntegerFace::GetMax() {
    return Locked([&] { return GetRange().max; });
}
std::int64_t IntegerFace::GetInc() {
    return Locked([&] { return GetRange().inc; });
}

EIncMode IntegerFace::GetIncMode() {
    return Locked([&] { return GetRange().validValues ? listIncrement : fixedIncrement; });
}

const int64_autovector_t IntegerFace::GetListOfValidValues(bool bounded) {
    return Locked([&] {
        const IntegerRange range = GetRange();
        int64_autovector_t values;
        if (range.validValues)
            for (const std::int64_t value : *range.validValues)
                if (!bounded || (value >= range.min && value <= range.max))
                    values.push_back(value);
        return values;
    });
}

gcstring IntegerFace::GetUnit() {
    const std::string_view unit = Map().Text().Text(Record(), ElementId::Unit);
    return gcstring(unit.data(), unit.size());
}

IFloat* IntegerFace::GetFloatAlias() {
    return dynamic_cast<IFloat*>(GetCastAlias());
}

void IntegerFace::ImposeMin(std::int64_t Value) {
    Locked([&] {
        imposedMin_ = Value;
        Changed();
        Map().FireChanged();
    });
}

void IntegerFace::ImposeMax(std::int64_t Value) {
    Locked([&] {
        imposedMax_ = Value;
        Changed();
        Map().FireChanged();
    });
}

gcstring IntegerFace::ShownText(bool ignoreCache) {
    return IntegerText(GetInteger(ignoreCache), representation_).c_str();
}

void IntegerFace::TakeShownText(const gcstring& text, bool verify) {
    const auto value = IntegerOfText(std::string_view(text.c_str(), text.size()));
    if (!value)
        Fail<InvalidArgumentException>(*this, std::string("'") + text.c_str() + "' is not an integer");
    SetInteger(*value, verify);
}

} // namespace Engine
} // namespace GenApi_3_2
