// Wrapper of an enumeration's entry. Owned by the node map's wrapper.
#pragma once

#include "genicam/ValueA.h"

namespace VX3::GenICam {

class EnumEntryA : public ValueA<IEnumEntry, GenApi_3_2::IEnumEntry> {
public:
    using ValueA::ValueA;

    std::shared_ptr<IVariant> GetVariant() override { return std::make_shared<Variant<unsigned int>>(0U); }
    long GetValue() override { return value_ ? value_->GetValue() : 0; }
    std::string GetSymbolic() const override {
        return value_ ? value_->GetSymbolic().c_str() : std::string();
    }
    double GetNumericValue() override { return value_ ? value_->GetNumericValue() : 0.0; }
    bool IsSelfClearing() override { return value_ && value_->IsSelfClearing(); }
};

} // namespace VX3::GenICam
