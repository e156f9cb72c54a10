#include "platform/genapi/kinds/NumberNode.h"

#include "platform/genapi/base/ValueText.h"

namespace GenApi_3_2 {
namespace Engine {

template <class T>
bool NumberNode<T>::Take(const Element& element) {
    switch (element.id) {
    case ElementId::Min:
    case ElementId::pMin:
        min_.TakeBound(*this, element, element.id == ElementId::pMin);
        return true;
    case ElementId::Max:
    case ElementId::pMax:
        max_.TakeBound(*this, element, element.id == ElementId::pMax);
        return true;
    case ElementId::Inc:
    case ElementId::pInc:
        inc_.TakeBound(*this, element, element.id == ElementId::pInc);
        return true;
    case ElementId::ValidValueSet:
        for (const std::string_view item : SplitList(element.text))
            if (const auto value = NumberKind<T>::Parse(item))
                validValues_.push_back(*value);
        return true;
    default:
        return source_.Take(*this, element) || FaceOf<T>::Take(element);
    }
}

template <class T>
typename NumberKind<T>::Range NumberNode<T>::ReadRange() {
    typename NumberKind<T>::Range range;
    // Other nodes are asked only for what the description leaves open here.
    if (!min_.isGiven || !max_.isGiven || !inc_.isGiven) {
        if (NodeBase* target = source_.Target())
            range = NumberKind<T>::RangeOf(*target);
        for (NodeBase* copy : source_.Copies())
            range.Intersect(NumberKind<T>::RangeOf(*copy));
    }
    if (min_.isGiven)
        range.min = min_.Get();
    if (max_.isGiven)
        range.max = max_.Get();
    if (inc_.isGiven)
        range.inc = inc_.Get();
    if (!validValues_.empty())
        range.validValues = &validValues_;
    return range;
}

template class NumberNode<std::int64_t>;
template class NumberNode<double>;

} // namespace Engine
} // namespace GenApi_3_2
