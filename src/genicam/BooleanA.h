// Wrapper of a boolean node. Owned by the node map's wrapper.
#pragma once

#include "genicam/ValueA.h"

namespace VX3::GenICam {

class BooleanA : public ValueA<IBoolean, GenApi_3_2::IBoolean> {
public:
    using ValueA::ValueA;
    using IBoolean::operator=;

    std::shared_ptr<IVariant> GetVariant() override {
        return std::make_shared<Variant<bool>>(GetValue(false, false));
    }
    void SetValue(bool value, bool verify) override {
        if (value_)
            value_->SetValue(value, verify);
    }
    bool GetValue(bool verify, bool ignoreCache) const override {
        return value_ && value_->GetValue(verify, ignoreCache);
    }
};

} // namespace VX3::GenICam
