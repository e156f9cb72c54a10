// SwissKnife and IntSwissKnife: values calculated from other nodes' values; they cannot be written.
#pragma once

#include "platform/genapi/FloatFace.h"
#include "platform/genapi/IntegerFace.h"
#include "platform/genapi/NodeFormula.h"

namespace GenApi_3_2 {
namespace Engine {

class IntSwissKnifeNode final : public IntegerFace {
public:
    using IntegerFace::IntegerFace;
    using IntegerFace::operator=;

protected:
    bool Take(const Element& element) override;
    void Finish() override { formula_.Compile(*this, inputs_); }
    std::int64_t ReadInteger(bool ignoreCache) override { return formula_.Evaluate(*this, ignoreCache); }
    EAccessMode DefaultAccess() const override { return RO; }

private:
    FormulaInputs inputs_;
    NodeFormula<std::int64_t> formula_;
};

class SwissKnifeNode final : public FloatFace {
public:
    using FloatFace::FloatFace;
    using FloatFace::operator=;

protected:
    bool Take(const Element& element) override;
    void Finish() override { formula_.Compile(*this, inputs_); }
    double ReadFloat(bool ignoreCache) override { return formula_.Evaluate(*this, ignoreCache); }
    EAccessMode DefaultAccess() const override { return RO; }

private:
    FormulaInputs inputs_;
    NodeFormula<double> formula_;
};

} // namespace Engine
} // namespace GenApi_3_2
