#include "platform/genapi/kinds/ConverterNode.h"

#include <cmath>
#include <type_traits>
#include <utility>

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

double Distance(double from, double to) {
    return to - from;
}
// Wraps where 64 bits do not hold it; what is no increment then counts as 1.
std::int64_t Distance(std::int64_t from, std::int64_t to) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(to) - static_cast<std::uint64_t>(from));
}

} // namespace

template <class T>
bool ConverterNode<T>::Take(const Element& element) {
    switch (element.id) {
    case ElementId::FormulaFrom:
        from_.SetText(element);
        return true;
    case ElementId::FormulaTo:
        to_.SetText(element);
        return true;
    case ElementId::pValue:
        target_ = this->Require(element, Role::Target);
        return true;
    case ElementId::Slope:
        slope_ = SlopeOfText(element.text);
        return true;
    case ElementId::IsLinear:
        isLinear_ = ParseBoolean(element.text).value_or(false);
        return true;
    default:
        return inputs_.Take(element) || FaceOf<T>::Take(element);
    }
}

template <class T>
void ConverterNode<T>::Finish() {
    if (!target_)
        return this->SetBroken(nullptr, "has no pValue");
    from_.Compile(*this, inputs_, "TO");
    if (!this->IsBroken())
        to_.Compile(*this, inputs_, "FROM");
}

template <class T>
T ConverterNode<T>::ReadNumber(bool ignoreCache) {
    return from_.Evaluate(*this, ignoreCache, NumberKind<T>::Get(*target_, ignoreCache));
}

template <class T>
void ConverterNode<T>::WriteNumber(T value, bool verify) {
    NumberKind<T>::Set(*target_, to_.Evaluate(*this, false, value), verify);
}

template <class T>
std::optional<T> ConverterNode<T>::Shown(T value) const {
    try {
        const T shown = from_.Evaluate(*this, false, value);
        if constexpr (std::is_same_v<T, double>)
            if (std::isnan(shown))
                return std::nullopt;
        return shown;
    } catch (const TooManyVisits&) {
        throw;
    } catch (const GenICam_3_2::RuntimeException&) {
        return std::nullopt; // no result at this end, a pole for example
    }
}

template <class T>
typename ConverterNode<T>::Range ConverterNode<T>::ReadRange() {
    Range range;
    if (slope_ == Varying && !isLinear_)
        return range;
    // A constant is shown whatever the other node holds: its bounds cannot be seen from here. They hold
    // there.
    if (!from_.UsesArgument())
        return range;
    const Range inner = NumberKind<T>::RangeOf(*target_);
    if (slope_ != Varying)
        SetBounds(range, inner);
    if (isLinear_)
        SetIncrement(range, inner.inc);
    return range;
}

template <class T>
void ConverterNode<T>::SetBounds(Range& range, const Range& inner) const {
    std::optional<T> low = Shown(inner.min);
    std::optional<T> high = Shown(inner.max);
    if (slope_ == Decreasing)
        std::swap(low, high);
    // The slope that descriptions state is not always the one their formulas have.
    if (low && high && *low > *high)
        std::swap(low, high);
    range.min = low.value_or(range.min);
    range.max = high.value_or(range.max);
}

template <class T>
void ConverterNode<T>::SetIncrement(Range& range, std::optional<T> step) const {
    if (!step)
        return;
    const auto here = Shown(T{});
    const auto there = Shown(*step);
    if (here && there)
        range.inc = *there > *here ? Distance(*here, *there) : Distance(*there, *here);
}

template class ConverterNode<std::int64_t>;
template class ConverterNode<double>;

} // namespace Engine
} // namespace GenApi_3_2
