#include "genicam/CategoryA.h"

namespace VX3::GenICam {

std::vector<IValue*> CategoryA::GetFeatures() const {
    std::vector<IValue*> features;
    if (!value_)
        return features;
    GenApi_3_2::FeatureList_t values;
    value_->GetFeatures(values);
    for (GenApi_3_2::IValue* value : values)
        if (auto* feature = dynamic_cast<IValue*>(WrapperOf(value->GetNode())))
            features.push_back(feature);
    return features;
}

} // namespace VX3::GenICam
