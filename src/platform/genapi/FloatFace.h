// The floating interface over what a node type reads and writes; base of all nodes with a floating value.
#pragma once

#include "platform/genapi/NodeBase.h"
#include "platform/genapi/NodeMap.h"

#include <cstdint>
#include <optional>

namespace GenApi_3_2 {
namespace Engine {

class FloatFace : public NodeBase, public IFloat {
public:
    FloatFace(NodeMap& map, const NodeRecord& record) : NodeBase(map, record, intfIFloat) {}

    void SetValue(double Value, bool Verify = true) override;
    IFloat& operator=(double Value) override;
    double GetValue(bool Verify = false, bool IgnoreCache = false) override;
    double operator()() override { return GetValue(); }
    double operator*() override { return GetValue(); }
    double GetMin() override;
    double GetMax() override;
    bool HasInc() override;
    EIncMode GetIncMode() override;
    double GetInc() override;
    const double_autovector_t GetListOfValidValues(bool bounded = true) override;
    ERepresentation GetRepresentation() override { return representation_; }
    gcstring GetUnit() const override;
    EDisplayNotation GetDisplayNotation() const override { return notation_; }
    std::int64_t GetDisplayPrecision() const override { return precision_.value_or(6); }
    IInteger* GetIntAlias() override;
    IEnumeration* GetEnumAlias() override;
    void ImposeMin(double Value) override;
    void ImposeMax(double Value) override;

    bool IsFloating() const final { return true; }
    // With what was imposed.
    FloatRange GetFloatRange() final;

protected:
    virtual FloatRange ReadRange() { return {}; }
    bool Take(const Element& element) override;
    gcstring ShownText(bool ignoreCache) override;
    void TakeShownText(const gcstring& text, bool verify) override;

private:
    ERepresentation representation_ = PureNumber;
    EDisplayNotation notation_ = fnAutomatic;
    std::optional<std::int64_t> precision_;
    std::optional<double> imposedMin_;
    std::optional<double> imposedMax_;
};

} // namespace Engine
} // namespace GenApi_3_2
