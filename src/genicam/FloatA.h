// Wrapper of a floating-point node. Owned by the node map's wrapper.
#pragma once

#include "genicam/ValueA.h"

namespace VX3::GenICam {

class FloatA : public ValueA<IFloat, GenApi_3_2::IFloat> {
public:
    using ValueA::ValueA;

    std::shared_ptr<IVariant> GetVariant() override;
    void SetValue(double value, bool verify) override;
    IFloat& operator=(double value) override;
    double GetValue(bool verify, bool ignoreCache) override;
    double operator*() override;
    double GetMin() override;
    double GetMax() override;
    bool HasInc() override;
    EIncMode GetIncMode() override;
    double GetInc() override;
    using NodeA::GetRepresentation;
    ERepresentation GetRepresentation() override;
    std::string GetUnit() const override;
    EDisplayNotation GetDisplayNotation() const override;
    std::int64_t GetDisplayPrecision() const override;
    void ImposeMin(double value) override;
    void ImposeMax(double value) override;
};

} // namespace VX3::GenICam
