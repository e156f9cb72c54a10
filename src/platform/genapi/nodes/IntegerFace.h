// The integer interface; base of all nodes with an integer value.
#pragma once

#include "platform/genapi/nodes/NumberFace.h"

namespace GenApi_3_2 {
namespace Engine {

class IntegerFace : public NumberFace<std::int64_t> {
public:
    using NumberFace::NumberFace;
    using NumberFace::operator=;

    EIncMode GetIncMode() override;
    std::int64_t GetInc() override;
    gcstring GetUnit() override { return Unit(); }
    IFloat* GetFloatAlias() override;

    IntegerRange GetRange() final;

protected:
    std::int64_t ReadInteger(bool ignoreCache) final { return ReadNumber(ignoreCache); }
    void WriteInteger(std::int64_t value, bool verify) final { WriteNumber(value, verify); }
    gcstring ShownText(bool ignoreCache) override;
    void TakeShownText(const gcstring& text, bool verify) override;
};

} // namespace Engine
} // namespace GenApi_3_2
