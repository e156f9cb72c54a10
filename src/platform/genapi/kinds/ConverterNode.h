// Converter and IntConverter: another node's value seen through a pair of formulas. FormulaFrom makes the
// value of what the other node holds (TO), FormulaTo makes what is written there of the value (FROM). T is
// double or std::int64_t.
#pragma once

#include "platform/genapi/kinds/NodeFormula.h"
#include "platform/genapi/nodes/NumberFaces.h"

#include <optional>

namespace GenApi_3_2 {
namespace Engine {

template <class T>
class ConverterNode final : public FaceOf<T> {
public:
    using Range = typename NumberKind<T>::Range;
    using FaceOf<T>::FaceOf;
    using FaceOf<T>::operator=;

protected:
    bool Take(const Element& element) override;
    void Finish() override;
    T ReadNumber(bool ignoreCache) override;
    void WriteNumber(T value, bool verify) override;
    EAccessMode InnerAccess() const override { return target_ ? target_->AccessMode() : NA; }
    Range ReadRange() override;

private:
    // A value of the other node seen from here; empty where the formula has no result.
    std::optional<T> Shown(T value) const;
    void SetBounds(Range& range, const Range& inner) const;
    // Only where the conversion is linear and the other node has an increment.
    void SetIncrement(Range& range, std::optional<T> step) const;

    FormulaInputs inputs_;
    NodeFormula<T> from_;
    NodeFormula<T> to_;
    NodeBase* target_ = nullptr;
    ESlope slope_ = Increasing;
    bool isLinear_ = false;
};

extern template class ConverterNode<std::int64_t>;
extern template class ConverterNode<double>;

} // namespace Engine
} // namespace GenApi_3_2
