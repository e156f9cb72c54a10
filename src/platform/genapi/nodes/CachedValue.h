// The last value known of a node, a number of either kind. Kept for good only where the node may be cached,
// and to the end of the operation that read it everywhere: one operation sees one moment of the device,
// however many ways lead to a node. Part of every node.
#pragma once

#include <cstdint>

namespace GenApi_3_2 {
namespace Engine {

// Counts what may change values behind the nodes' back: operations and writes. From 1.
using Moment = std::uint64_t;

class CachedValue {
public:
    bool IsCachable() const { return isCachable_; }
    void SetCachable(bool isCachable) { isCachable_ = isCachable; }

    bool IsKnown() const { return kept_ != Kind::None; }
    // The value when one of this kind is known, null otherwise.
    const std::int64_t* Integer() const { return kept_ == Kind::Integer ? &value_.integer : nullptr; }
    const double* Float() const { return kept_ == Kind::Float ? &value_.real : nullptr; }
    // The value when one of this kind was read at that moment: past all caches, where `ignoreCache`.
    const std::int64_t* Integer(Moment now, bool ignoreCache) const {
        return WasReadAt(now, ignoreCache) && read_ == Kind::Integer ? &value_.integer : nullptr;
    }
    const double* Float(Moment now, bool ignoreCache) const {
        return WasReadAt(now, ignoreCache) && read_ == Kind::Float ? &value_.real : nullptr;
    }

    // A value that was written.
    void Keep(std::int64_t value) {
        value_.integer = value;
        Note(Kind::Integer, 0, false);
    }
    void Keep(double value) {
        value_.real = value;
        Note(Kind::Float, 0, false);
    }
    // A value that was read, which began at that moment.
    void KeepRead(std::int64_t value, Moment moment, bool ignoredCache) {
        value_.integer = value;
        Note(Kind::Integer, moment, ignoredCache);
    }
    void KeepRead(double value, Moment moment, bool ignoredCache) {
        value_.real = value;
        Note(Kind::Float, moment, ignoredCache);
    }
    void Drop() {
        kept_ = Kind::None;
        moment_ = 0;
    }

private:
    enum class Kind : std::uint8_t { None, Integer, Float };

    bool WasReadAt(Moment now, bool ignoreCache) const {
        return moment_ == now && (ignoredCache_ || !ignoreCache);
    }
    void Note(Kind kind, Moment moment, bool ignoredCache) {
        kept_ = isCachable_ ? kind : Kind::None;
        read_ = kind;
        moment_ = moment;
        ignoredCache_ = ignoredCache;
    }

    union {
        std::int64_t integer;
        double real;
    } value_ = {0};
    Moment moment_ = 0; // 0: none
    Kind kept_ = Kind::None;
    Kind read_ = Kind::None;
    bool ignoredCache_ = false;
    bool isCachable_ = false;
};

} // namespace Engine
} // namespace GenApi_3_2
