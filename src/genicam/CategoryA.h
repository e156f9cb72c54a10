// Wrapper of a category. Owned by the node map's wrapper.
#pragma once

#include "genicam/ValueA.h"

namespace VX3::GenICam {

class CategoryA : public ValueA<ICategory, GenApi_3_2::ICategory> {
public:
    using ValueA::ValueA;

    std::shared_ptr<IVariant> GetVariant() override { return std::make_shared<Variant<long>>(0L); }
    std::vector<IValue*> GetFeatures() const override;
};

} // namespace VX3::GenICam
