// Float: a number of the description or of other nodes, with bounds of its own.
#pragma once

#include "platform/genapi/FloatFace.h"
#include "platform/genapi/ValueSource.h"

namespace GenApi_3_2 {
namespace Engine {

class FloatNode final : public FloatFace {
public:
    using FloatFace::FloatFace;
    using FloatFace::operator=;

protected:
    bool Take(const Element& element) override;
    void Finish() override { source_.Finish(*this); }
    double ReadFloat(bool ignoreCache) override { return source_.Read(ignoreCache); }
    void WriteFloat(double value, bool verify) override { source_.Write(*this, value, verify); }
    EAccessMode InnerAccess() const override { return source_.Access(); }
    FloatRange ReadRange() override;

private:
    mutable ValueSource<double> source_;
    Operand<double> min_;
    Operand<double> max_;
    Operand<double> inc_;
    std::vector<double> validValues_;
};

} // namespace Engine
} // namespace GenApi_3_2
