// SwissKnife and IntSwissKnife: values calculated from other nodes' values; they cannot be written. T is
// double or std::int64_t.
#pragma once

#include "platform/genapi/kinds/NodeFormula.h"
#include "platform/genapi/nodes/NumberFaces.h"

namespace GenApi_3_2 {
namespace Engine {

template <class T>
class SwissKnifeNode final : public FaceOf<T> {
public:
    using FaceOf<T>::FaceOf;
    using FaceOf<T>::operator=;

protected:
    bool Take(const Element& element) override {
        if (element.id != ElementId::Formula)
            return inputs_.Take(element) || FaceOf<T>::Take(element);
        formula_.SetText(element);
        return true;
    }
    void Finish() override { formula_.Compile(*this, inputs_); }
    T ReadNumber(bool ignoreCache) override { return formula_.Evaluate(*this, ignoreCache); }
    EAccessMode DefaultAccess() const override { return RO; }

private:
    FormulaInputs inputs_;
    NodeFormula<T> formula_;
};

} // namespace Engine
} // namespace GenApi_3_2
