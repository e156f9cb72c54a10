#include "platform/genapi/IntegerNode.h"

#include "platform/genapi/NumberText.h"
#include "platform/genapi/ValueText.h"

namespace GenApi_3_2 {
namespace Engine {

bool IntegerNode::Take(const Element& element) {
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
            if (const auto value = ParseInteger(item))
                validValues_.push_back(*value);
        return true;
    default:
        return source_.Take(*this, element) || IntegerFace::Take(element);
    }
}

IntegerRange IntegerNode::ReadRange() {
    IntegerRange range;
    // Other nodes are asked only for what the description leaves open here.
    if (!min_.isGiven || !max_.isGiven || !inc_.isGiven) {
        if (NodeBase* target = source_.Target())
            range = target->GetRange();
        for (NodeBase* copy : source_.Copies())
            range.Intersect(copy->GetRange());
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

} // namespace Engine
} // namespace GenApi_3_2
