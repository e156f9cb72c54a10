// Wrapper of an integer node. Owned by the node map's wrapper.
#pragma once

#include "genicam/ValueA.h"

namespace VX3::GenICam {

class IntegerA : public ValueA<IInteger, GenApi_3_2::IInteger> {
public:
    using ValueA::ValueA;

    std::shared_ptr<IVariant> GetVariant() override;
    void SetValue(long value, bool verify) override;
    IInteger& operator=(long value) override;
    long GetValue(bool verify, bool ignoreCache) override;
    long operator*() override;
    long GetMin() override;
    long GetMax() override;
    EIncMode GetIncMode() override;
    long GetInc() override;
    using NodeA::GetRepresentation;
    ERepresentation GetRepresentation() override;
    std::string GetUnit() override;
    void ImposeMin(long value) override;
    void ImposeMax(long value) override;
};

} // namespace VX3::GenICam
