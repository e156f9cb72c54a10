// What the integer and the floating interface have in common, over what a node type reads and writes. T is
// std::int64_t or double; IntegerFace and FloatFace add what is theirs alone.
#pragma once

#include "platform/genapi/nodes/NumberKind.h"

#include <optional>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

template <class T>
class NumberFace : public NodeBase, public NumberKind<T>::Interface {
public:
    using Interface = typename NumberKind<T>::Interface;
    using Range = typename NumberKind<T>::Range;

    NumberFace(NodeContext& context, const NodeRecord& record)
        : NodeBase(context, record, NumberKind<T>::Type) {}

    void SetValue(T Value, bool Verify = true) override;
    Interface& operator=(T Value) override;
    T GetValue(bool Verify = false, bool IgnoreCache = false) override;
    T operator()() override { return GetValue(); }
    T operator*() override { return GetValue(); }
    T GetMin() override;
    T GetMax() override;
    const std::vector<T> GetListOfValidValues(bool bounded = true) override;
    ERepresentation GetRepresentation() override;
    void ImposeMin(T Value) override { Impose(imposedMin_, Value); }
    void ImposeMax(T Value) override { Impose(imposedMax_, Value); }

protected:
    // What the node type is made of.
    virtual T ReadNumber(bool ignoreCache) = 0;
    virtual void WriteNumber(T, bool) {
        Fail<GenICam_3_2::AccessException>(*this, "cannot be written as a number");
    }
    virtual Range ReadRange() { return {}; }

    bool Take(const Element& element) override;
    // The range with what was imposed.
    Range BoundedRange();

    // That of the node that holds the value, where this one gives none. Lock held.
    ERepresentation Representation() const;
    gcstring Unit() const;

private:
    ERepresentation representation_ = _UndefinedRepresentation;
    void Impose(std::optional<T>& bound, T value);

    std::optional<T> imposedMin_;
    std::optional<T> imposedMax_;
};

extern template class NumberFace<std::int64_t>;
extern template class NumberFace<double>;

} // namespace Engine
} // namespace GenApi_3_2
