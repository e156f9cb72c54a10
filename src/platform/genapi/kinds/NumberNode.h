// Integer and Float: a number of the description or of other nodes, with bounds of its own. T is std::int64_t
// or double.
#pragma once

#include "platform/genapi/nodes/NumberFaces.h"
#include "platform/genapi/nodes/ValueSource.h"

#include <vector>

namespace GenApi_3_2 {
namespace Engine {

template <class T>
class NumberNode final : public FaceOf<T> {
public:
    using FaceOf<T>::FaceOf;
    using FaceOf<T>::operator=;

    NodeBase* Origin() const override { return source_.Target(); }

protected:
    bool Take(const Element& element) override;
    void Finish() override { source_.Finish(*this); }
    T ReadNumber(bool ignoreCache) override { return source_.Read(ignoreCache); }
    void WriteNumber(T value, bool verify) override { source_.Write(*this, value, verify); }
    EAccessMode InnerAccess() const override { return source_.Access(); }
    typename NumberKind<T>::Range ReadRange() override;

private:
    mutable ValueSource<T> source_;
    Operand<T> min_;
    Operand<T> max_;
    Operand<T> inc_;
    std::vector<T> validValues_;
};

extern template class NumberNode<std::int64_t>;
extern template class NumberNode<double>;

} // namespace Engine
} // namespace GenApi_3_2
