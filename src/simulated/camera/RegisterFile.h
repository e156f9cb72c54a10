// A camera's registers as bytes: big-endian, some of them writable by hosts.
#pragma once

#include "vx3/core/Mutex.h"
#include "wire/WireCursor.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace VX3 {
namespace Simulated {

// Safe to use from any thread. Accesses outside fail and change nothing.
class RegisterFile {
public:
    // Replaces everything by `size` zeros that nobody but the owner may write.
    void Clear(std::size_t size);
    void AllowWrites(std::uint32_t address, std::uint32_t size);

    std::size_t Size() const;
    [[nodiscard]] bool Read(std::uint64_t address, WireRoom room) const;
    [[nodiscard]] bool Contains(std::uint64_t address, std::size_t count) const;
    // The whole range, for hosts.
    [[nodiscard]] bool IsWritable(std::uint64_t address, std::size_t count) const;

    // The owner's own hands.
    bool Write(std::uint64_t address, WireBytes bytes);
    bool SetValue(std::uint64_t address, std::uint32_t value);
    // Cut to `width` bytes and filled with zeros.
    bool SetText(std::uint64_t address, const std::string& text, std::size_t width);
    // 0 outside.
    std::uint32_t Value(std::uint64_t address) const;

private:
    struct Range {
        std::uint64_t first;
        std::uint64_t end;
    };

    bool Holds(std::uint64_t address, std::size_t count) const VX3_REQUIRES(mutex_) {
        return address <= bytes_.size() && count <= bytes_.size() - address;
    }

    mutable Mutex mutex_;
    std::vector<std::uint8_t> bytes_ VX3_GUARDED_BY(mutex_);
    std::vector<Range> writable_ VX3_GUARDED_BY(mutex_);
};

} // namespace Simulated
} // namespace VX3
