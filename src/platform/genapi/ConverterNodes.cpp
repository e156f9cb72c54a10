#include "platform/genapi/ConverterNodes.h"

#include "platform/genapi/NumberText.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

namespace GenApi_3_2 {
namespace Engine {
namespace {

ESlope SlopeOfText(std::string_view text) {
    if (text == "Decreasing")
        return Decreasing;
    if (text == "Varying")
        return Varying;
    return text == "Automatic" ? Automatic : Increasing;
}

} // namespace

template <class T>
bool Conversion<T>::Take(NodeBase& owner, const Element& element) {
    switch (element.id) {
    case ElementId::FormulaFrom:
        from_.SetText(element);
        return true;
    case ElementId::FormulaTo:
        to_.SetText(element);
        return true;
    case ElementId::pValue:
        target_ = owner.Require(element, Role::Target);
        return true;
    case ElementId::Slope:
        slope_ = SlopeOfText(element.text);
        return true;
    case ElementId::IsLinear:
        isLinear_ = ParseBoolean(element.text).value_or(false);
        return true;
    default:
        return inputs_.Take(element);
    }
}

template <class T>
void Conversion<T>::Finish(NodeBase& owner) {
    if (!target_)
        return owner.SetBroken(nullptr, "has no pValue");
    from_.Compile(owner, inputs_, "TO");
    if (!owner.IsBroken())
        to_.Compile(owner, inputs_, "FROM");
}

template <class T>
T Conversion<T>::Read(const NodeBase& owner, bool ignoreCache) const {
    if constexpr (std::is_same_v<T, double>)
        return from_.Evaluate(owner, ignoreCache, target_->GetNumeric(ignoreCache));
    else
        return from_.Evaluate(owner, ignoreCache, target_->GetInteger(ignoreCache));
}

template <class T>
void Conversion<T>::Write(const NodeBase& owner, T value, bool verify) const {
    const T converted = to_.Evaluate(owner, false, value);
    if constexpr (std::is_same_v<T, double>)
        target_->SetNumeric(converted, verify);
    else
        target_->SetInteger(converted, verify);
}

template <class T>
std::optional<T> Conversion<T>::Shown(const NodeBase& owner, T value) const {
    try {
        const T shown = from_.Evaluate(owner, false, value);
        if constexpr (std::is_same_v<T, double>)
            if (std::isnan(shown))
                return std::nullopt;
        return shown;
    } catch (const GenICam_3_2::RuntimeException&) {
        return std::nullopt; // no result at this end, a pole for example
    }
}

template <class T>
void Conversion<T>::ReadBounds(const NodeBase& owner, T& min, T& max) const {
    if (slope_ == Varying)
        return;
    std::optional<T> low;
    std::optional<T> high;
    if constexpr (std::is_same_v<T, double>) {
        const FloatRange range = target_->GetFloatRange();
        low = Shown(owner, range.min);
        high = Shown(owner, range.max);
    } else {
        const IntegerRange range = target_->GetRange();
        low = Shown(owner, range.min);
        high = Shown(owner, range.max);
    }
    if (slope_ == Decreasing)
        std::swap(low, high);
    // The slope that descriptions state is not always the one their formulas have.
    if (low && high && *low > *high)
        std::swap(low, high);
    min = low.value_or(min);
    max = high.value_or(max);
}

template <class T>
std::optional<T> Conversion<T>::ReadIncrement(const NodeBase& owner) const {
    if (!isLinear_)
        return std::nullopt;
    T start{};
    T step{};
    if constexpr (std::is_same_v<T, double>) {
        const FloatRange range = target_->GetFloatRange();
        if (!range.inc)
            return std::nullopt;
        step = *range.inc;
    } else {
        step = target_->GetRange().inc;
    }
    const auto here = Shown(owner, start);
    const auto there = Shown(owner, start + step);
    if (!here || !there)
        return std::nullopt;
    return *there > *here ? *there - *here : *here - *there;
}

template class Conversion<std::int64_t>;
template class Conversion<double>;

bool IntConverterNode::Take(const Element& element) {
    return conversion_.Take(*this, element) || IntegerFace::Take(element);
}

IntegerRange IntConverterNode::ReadRange() {
    IntegerRange range;
    conversion_.ReadBounds(*this, range.min, range.max);
    range.inc = conversion_.ReadIncrement(*this).value_or(1);
    return range;
}

bool ConverterNode::Take(const Element& element) {
    return conversion_.Take(*this, element) || FloatFace::Take(element);
}

FloatRange ConverterNode::ReadRange() {
    FloatRange range;
    conversion_.ReadBounds(*this, range.min, range.max);
    range.inc = conversion_.ReadIncrement(*this);
    return range;
}

} // namespace Engine
} // namespace GenApi_3_2
