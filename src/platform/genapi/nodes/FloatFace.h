// The floating interface; base of all nodes with a floating value.
#pragma once

#include "platform/genapi/nodes/NumberFace.h"

namespace GenApi_3_2 {
namespace Engine {

class FloatFace : public NumberFace<double> {
public:
    using NumberFace::NumberFace;
    using NumberFace::operator=;

    bool HasInc() override;
    EIncMode GetIncMode() override;
    double GetInc() override;
    gcstring GetUnit() const override { return Unit(); }
    EDisplayNotation GetDisplayNotation() const override { return notation_; }
    std::int64_t GetDisplayPrecision() const override { return precision_.value_or(6); }
    IInteger* GetIntAlias() override;
    IEnumeration* GetEnumAlias() override;

    bool IsFloating() const final { return true; }
    FloatRange GetFloatRange() final { return BoundedRange(); }

protected:
    bool Take(const Element& element) override;
    double ReadFloat(bool ignoreCache) final { return ReadNumber(ignoreCache); }
    void WriteFloat(double value, bool verify) final { WriteNumber(value, verify); }
    gcstring ShownText(bool ignoreCache) override;
    void TakeShownText(const gcstring& text, bool verify) override;

private:
    EDisplayNotation notation_ = fnAutomatic;
    std::optional<std::int64_t> precision_;
};

} // namespace Engine
} // namespace GenApi_3_2
