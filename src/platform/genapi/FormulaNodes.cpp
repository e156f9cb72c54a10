#include "platform/genapi/FormulaNodes.h"

namespace GenApi_3_2 {
namespace Engine {

bool IntSwissKnifeNode::Take(const Element& element) {
    if (element.id == ElementId::Formula)
        formula_.SetText(element);
    else
        return inputs_.Take(element) || IntegerFace::Take(element);
    return true;
}

bool SwissKnifeNode::Take(const Element& element) {
    if (element.id == ElementId::Formula)
        formula_.SetText(element);
    else
        return inputs_.Take(element) || FloatFace::Take(element);
    return true;
}

} // namespace Engine
} // namespace GenApi_3_2
