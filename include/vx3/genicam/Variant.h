// Small value objects that nodes hand out for comparison.
#pragma once

#include "vx3/core/Export.h"

#include <utility>

namespace VX3::GenICam {

class VX3_API IVariant {
public:
    virtual bool operator==(const IVariant& other) const = 0;
    virtual ~IVariant() = default;
};

// Equal only to a variant of the same type and value.
template <typename T>
class Variant : public IVariant {
public:
    explicit Variant(T value) : value_(std::move(value)) {}
    const T& Value() const { return value_; }
    bool operator==(const IVariant& other) const override {
        const auto* same = dynamic_cast<const Variant<T>*>(&other);
        return same != nullptr && same->value_ == value_;
    }

private:
    T value_;
};

} // namespace VX3::GenICam
