#include "platform/genapi/nodes/NumberFace.h"

#include "platform/genapi/base/ValueText.h"

#include <algorithm>
#include <type_traits>

namespace GenApi_3_2 {
namespace Engine {

template <class T>
bool NumberFace<T>::Take(const Element& element) {
    if (element.id != ElementId::Representation)
        return false;
    representation_ = RepresentationOfText(element.text);
    return true;
}

template <class T>
void NumberFace<T>::SetValue(T Value, bool Verify) {
    Write(Verify, [&] {
        if constexpr (std::is_same_v<T, double>)
            SetFloat(Value, Verify);
        else
            SetInteger(Value, Verify);
    });
}

template <class T>
typename NumberFace<T>::Interface& NumberFace<T>::operator=(T Value) {
    SetValue(Value);
    return *this;
}

template <class T>
T NumberFace<T>::GetValue(bool Verify, bool IgnoreCache) {
    const Operation operation(context_);
    if (Verify)
        RequireReadable();
    if constexpr (std::is_same_v<T, double>)
        return GetFloat(IgnoreCache);
    else
        return GetInteger(IgnoreCache);
}

template <class T>
typename NumberFace<T>::Range NumberFace<T>::BoundedRange() {
    Enter();
    Range range = ReadRange();
    if (imposedMin_)
        range.min = std::max(range.min, *imposedMin_);
    if (imposedMax_)
        range.max = std::min(range.max, *imposedMax_);
    return range;
}

template <class T>
T NumberFace<T>::GetMin() {
    return Locked([&] { return NumberKind<T>::RangeOf(*this).min; });
}

template <class T>
T NumberFace<T>::GetMax() {
    return Locked([&] { return NumberKind<T>::RangeOf(*this).max; });
}

template <class T>
ERepresentation NumberFace<T>::GetRepresentation() {
    return Locked([&] { return Representation(); });
}

template <class T>
ERepresentation NumberFace<T>::Representation() const {
    if (representation_ != _UndefinedRepresentation)
        return representation_;
    const Element* given = FindAtOrigin(ElementId::Representation);
    return given ? RepresentationOfText(given->text) : PureNumber;
}

template <class T>
gcstring NumberFace<T>::Unit() const {
    return Locked([&] {
        const Element* given = FindAtOrigin(ElementId::Unit);
        return given ? ToGc(given->text) : gcstring();
    });
}

template <class T>
const std::vector<T> NumberFace<T>::GetListOfValidValues(bool bounded) {
    return Locked([&] {
        const Range range = NumberKind<T>::RangeOf(*this);
        std::vector<T> values;
        if (range.validValues)
            for (const T value : *range.validValues)
                if (!bounded || (value >= range.min && value <= range.max))
                    values.push_back(value);
        return values;
    });
}

template <class T>
void NumberFace<T>::Impose(std::optional<T>& bound, T value) {
    Locked([&] {
        bound = value;
        Changed();
        context_.FireChanged();
    });
}

template class NumberFace<std::int64_t>;
template class NumberFace<double>;

} // namespace Engine
} // namespace GenApi_3_2
