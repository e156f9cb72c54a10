// Converter and IntConverter: another node's value seen through a pair of formulas. FormulaFrom makes the
// value of what the other node holds (TO), FormulaTo makes what is written there of the value (FROM).
#pragma once

#include "platform/genapi/FloatFace.h"
#include "platform/genapi/IntegerFace.h"
#include "platform/genapi/NodeFormula.h"

#include <optional>

namespace GenApi_3_2 {
namespace Engine {

template <class T>
class Conversion {
public:
    bool Take(NodeBase& owner, const Element& element);
    void Finish(NodeBase& owner);
    T Read(const NodeBase& owner, bool ignoreCache) const;
    void Write(const NodeBase& owner, T value, bool verify) const;
    EAccessMode Access() const { return target_ ? target_->AccessMode() : NA; }
    // The bounds of the other node seen from here.
    void ReadBounds(const NodeBase& owner, T& min, T& max) const;
    // Only where the conversion is linear and the other node has an increment.
    std::optional<T> ReadIncrement(const NodeBase& owner) const;

private:
    std::optional<T> Shown(const NodeBase& owner, T value) const;

    FormulaInputs inputs_;
    NodeFormula<T> from_;
    NodeFormula<T> to_;
    NodeBase* target_ = nullptr;
    ESlope slope_ = Increasing;
    bool isLinear_ = false;
};

class IntConverterNode final : public IntegerFace {
public:
    using IntegerFace::IntegerFace;
    using IntegerFace::operator=;

protected:
    bool Take(const Element& element) override;
    void Finish() override { conversion_.Finish(*this); }
    std::int64_t ReadInteger(bool ignoreCache) override { return conversion_.Read(*this, ignoreCache); }
    void WriteInteger(std::int64_t value, bool verify) override { conversion_.Write(*this, value, verify); }
    EAccessMode InnerAccess() const override { return conversion_.Access(); }
    IntegerRange ReadRange() override;

private:
    Conversion<std::int64_t> conversion_;
};

class ConverterNode final : public FloatFace {
public:
    using FloatFace::FloatFace;
    using FloatFace::operator=;

protected:
    bool Take(const Element& element) override;
    void Finish() override { conversion_.Finish(*this); }
    double ReadFloat(bool ignoreCache) override { return conversion_.Read(*this, ignoreCache); }
    void WriteFloat(double value, bool verify) override { conversion_.Write(*this, value, verify); }
    EAccessMode InnerAccess() const override { return conversion_.Access(); }
    FloatRange ReadRange() override;

private:
    Conversion<double> conversion_;
};

} // namespace Engine
} // namespace GenApi_3_2
