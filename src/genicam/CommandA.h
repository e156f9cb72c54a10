// Wrapper of a command node. Owned by the node map's wrapper.
#pragma once

#include "genicam/ValueA.h"

namespace VX3::GenICam {

class CommandA : public ValueA<ICommand, GenApi_3_2::ICommand> {
public:
    using ValueA::ValueA;

    std::shared_ptr<IVariant> GetVariant() override { return std::make_shared<Variant<bool>>(IsDone(true)); }
    void Execute(bool verify) override {
        if (value_)
            value_->Execute(verify);
    }
    bool IsDone(bool verify) override { return value_ && value_->IsDone(verify); }
};

} // namespace VX3::GenICam
