// Integer: a number of the description or of other nodes, with bounds of its own.
#pragma once

#include "platform/genapi/IntegerFace.h"
#include "platform/genapi/ValueSource.h"

namespace GenApi_3_2 {
namespace Engine {

class IntegerNode final : public IntegerFace {
public:
    using IntegerFace::IntegerFace;
    using IntegerFace::operator=;

protected:
    bool Take(const Element& element) override;
    void Finish() override { source_.Finish(*this); }
    std::int64_t ReadInteger(bool ignoreCache) override { return source_.Read(ignoreCache); }
    void WriteInteger(std::int64_t value, bool verify) override { source_.Write(*this, value, verify); }
    EAccessMode InnerAccess() const override { return source_.Access(); }
    IntegerRange ReadRange() override;

private:
    mutable ValueSource<std::int64_t> source_;
    Operand<std::int64_t> min_;
    Operand<std::int64_t> max_;
    Operand<std::int64_t> inc_;
    std::vector<std::int64_t> validValues_;
};

} // namespace Engine
} // namespace GenApi_3_2
