#include "genicam/IntegerA.h"

#include "vx3/core/LastFailure.h"
#include "vx3/core/Utilities.h"

namespace VX3::GenICam {

namespace {

// `value` moved into [min, max] and down onto the grid min, min + inc, min + 2 inc, ... Unsigned differences,
// since max - min may exceed the signed range.
long Snap(long value, long min, long max, long inc) {
    if (value > max)
        return max;
    if (value < min)
        return min;
    if (inc == 0)
        inc = 1;
    const auto offset = static_cast<unsigned long>(value) - static_cast<unsigned long>(min);
    const auto step = inc < 0 ? 0UL - static_cast<unsigned long>(inc) : static_cast<unsigned long>(inc);
    return static_cast<long>(static_cast<unsigned long>(min) + step * (offset / step));
}

} // namespace

std::shared_ptr<IVariant> IntegerA::GetVariant() {
    return std::make_shared<Variant<long>>(GetValue(false, false));
}

void IntegerA::SetValue(long value, bool verify) {
    if (!value_)
        return;
    const long max = GetMax();
    const long min = GetMin();
    const long inc = GetInc();
    const long written = Snap(value, min, max, inc);
    value_->SetValue(written, verify);
    if (written != value)
        SetLastFailure(Status::Ok,
                       StringFormat("%s: %ld was asked for, %ld was set (%ld to %ld in steps of %ld)",
                                    GetName().c_str(), value, written, min, max, inc));
}

IInteger& IntegerA::operator=(long value) {
    SetValue(value, true);
    return *this;
}

long IntegerA::GetValue(bool verify, bool ignoreCache) {
    return value_ ? value_->GetValue(verify, ignoreCache) : 0;
}

long IntegerA::operator*() {
    return value_ ? **value_ : 0;
}

long IntegerA::GetMin() {
    return value_ ? value_->GetMin() : 0;
}

long IntegerA::GetMax() {
    return value_ ? value_->GetMax() : 0;
}

EIncMode IntegerA::GetIncMode() {
    return value_ ? static_cast<EIncMode>(value_->GetIncMode()) : EIncMode::NoIncrement;
}

long IntegerA::GetInc() {
    return value_ ? value_->GetInc() : 0;
}

ERepresentation IntegerA::GetRepresentation() {
    return value_ ? static_cast<ERepresentation>(value_->GetRepresentation()) : ERepresentation::Linear;
}

std::string IntegerA::GetUnit() {
    return value_ ? value_->GetUnit().c_str() : std::string();
}

void IntegerA::ImposeMin(long value) {
    if (value_)
        value_->ImposeMin(value);
}

void IntegerA::ImposeMax(long value) {
    if (value_)
        value_->ImposeMax(value);
}

} // namespace VX3::GenICam
