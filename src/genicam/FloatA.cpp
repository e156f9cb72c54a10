#include "genicam/FloatA.h"

#include "core/NumberText.h"
#include "vx3/core/LastFailure.h"

namespace VX3::GenICam {

std::shared_ptr<IVariant> FloatA::GetVariant() {
    return std::make_shared<Variant<double>>(GetValue(false, false));
}

void FloatA::SetValue(double value, bool verify) {
    if (!value_)
        return;
    const double max = GetMax();
    const double min = GetMin();
    double written = value > max ? max : value;
    if (written < min)
        written = min;
    value_->SetValue(written, verify);
    if (written < value || written > value)
        SetLastFailure(Status::Ok, GetName() + ": " + ShortestText(value) + " was asked for, " +
                                       ShortestText(written) + " was set (" + ShortestText(min) + " to " +
                                       ShortestText(max) + ")");
}

IFloat& FloatA::operator=(double value) {
    SetValue(value, true);
    return *this;
}

double FloatA::GetValue(bool verify, bool ignoreCache) {
    return value_ ? value_->GetValue(verify, ignoreCache) : 0.0;
}

double FloatA::operator*() {
    return value_ ? **value_ : 0.0;
}

double FloatA::GetMin() {
    return value_ ? value_->GetMin() : 0.0;
}

double FloatA::GetMax() {
    return value_ ? value_->GetMax() : 0.0;
}

bool FloatA::HasInc() {
    return value_ && value_->HasInc();
}

EIncMode FloatA::GetIncMode() {
    return value_ ? static_cast<EIncMode>(value_->GetIncMode()) : EIncMode::NoIncrement;
}

double FloatA::GetInc() {
    return value_ ? value_->GetInc() : 0.0;
}

ERepresentation FloatA::GetRepresentation() {
    return value_ ? static_cast<ERepresentation>(value_->GetRepresentation()) : ERepresentation::Linear;
}

std::string FloatA::GetUnit() const {
    return value_ ? value_->GetUnit().c_str() : std::string();
}

EDisplayNotation FloatA::GetDisplayNotation() const {
    return value_ ? static_cast<EDisplayNotation>(value_->GetDisplayNotation()) : EDisplayNotation::Automatic;
}

std::int64_t FloatA::GetDisplayPrecision() const {
    return value_ ? value_->GetDisplayPrecision() : 0;
}

void FloatA::ImposeMin(double value) {
    if (value_)
        value_->ImposeMin(value);
}

void FloatA::ImposeMax(double value) {
    if (value_)
        value_->ImposeMax(value);
}

} // namespace VX3::GenICam
