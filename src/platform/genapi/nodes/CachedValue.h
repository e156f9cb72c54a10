// The last value known of a node, a number of either kind; kept only where the node may be cached. Part of
// every node.
#pragma once

#include <cstdint>

namespace GenApi_3_2 {
namespace Engine {

class CachedValue {
public:
    bool IsCachable() const { return isCachable_; }
    void SetCachable(bool isCachable) { isCachable_ = isCachable; }

    bool IsKnown() const { return kind_ != Kind::None; }
    // The value when one of this kind is known, null otherwise.
    const std::int64_t* Integer() const { return kind_ == Kind::Integer ? &value_.integer : nullptr; }
    const double* Float() const { return kind_ == Kind::Float ? &value_.real : nullptr; }

    void Keep(std::int64_t value) {
        if (!isCachable_)
            return;
        value_.integer = value;
        kind_ = Kind::Integer;
    }
    void Keep(double value) {
        if (!isCachable_)
            return;
        value_.real = value;
        kind_ = Kind::Float;
    }
    void Drop() { kind_ = Kind::None; }

private:
    enum class Kind : std::uint8_t { None, Integer, Float };
    union {
        std::int64_t integer;
        double real;
    } value_ = {0};
    Kind kind_ = Kind::None;
    bool isCachable_ = false;
};

} // namespace Engine
} // namespace GenApi_3_2
