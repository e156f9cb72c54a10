// Bounded cursors over big-endian wire bytes. Every byte that arrives from or leaves for a camera passes
// through here; a cursor never reads or writes past the bytes it was given.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace VX3 {

// Bytes somebody else owns.
struct WireBytes {
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;
};

// Room somebody else owns, to be written.
struct WireRoom {
    std::uint8_t* data = nullptr;
    std::size_t size = 0;
};

// Unchecked big-endian access; the caller has checked the length. For header decoding on the receive path.
namespace Wire {
template <typename T>
inline T Load(const std::uint8_t* p) {
    T value = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i)
        value = static_cast<T>((value << 8) | p[i]); // compilers make one load and a byte swap of this
    return value;
}
template <>
inline std::uint8_t Load<std::uint8_t>(const std::uint8_t* p) {
    return *p;
}
template <typename T>
inline void Store(std::uint8_t* p, T value) {
    for (std::size_t i = 0; i < sizeof(T); ++i)
        p[i] = static_cast<std::uint8_t>(value >> (8 * (sizeof(T) - 1 - i)));
}
} // namespace Wire

// Reads forward. A read that does not fit fails, moves nothing and leaves its output unchanged.
class WireReader {
public:
    WireReader(const void* data, std::size_t size)
        : next_(static_cast<const std::uint8_t*>(data)), remaining_(size) {}
    explicit WireReader(WireBytes bytes) : WireReader(bytes.data, bytes.size) {}

    std::size_t Remaining() const { return remaining_; }
    [[nodiscard]] bool U8(std::uint8_t& value) { return Number(value); }
    [[nodiscard]] bool U16(std::uint16_t& value) { return Number(value); }
    [[nodiscard]] bool U32(std::uint32_t& value) { return Number(value); }
    [[nodiscard]] bool U64(std::uint64_t& value) { return Number(value); }
    [[nodiscard]] bool Skip(std::size_t count) {
        if (count > remaining_)
            return false;
        Advance(count);
        return true;
    }
    // The next `count` bytes in place.
    [[nodiscard]] bool View(std::size_t count, WireBytes& view) {
        if (count > remaining_)
            return false;
        view = {next_, count};
        Advance(count);
        return true;
    }
    [[nodiscard]] bool Copy(void* destination, std::size_t count) {
        if (count > remaining_)
            return false;
        if (count != 0)
            std::memcpy(destination, next_, count);
        Advance(count);
        return true;
    }
    // A field of `width` bytes holding a text that ends at its first NUL or at the field's end.
    [[nodiscard]] bool Text(std::size_t width, std::string& text) {
        WireBytes field;
        if (!View(width, field))
            return false;
        std::size_t length = 0;
        while (length < width && field.data[length] != 0)
            ++length;
        text.assign(field.data, field.data + length);
        return true;
    }
    // Everything left.
    WireBytes Rest() {
        const WireBytes rest{next_, remaining_};
        Advance(remaining_);
        return rest;
    }

private:
    template <typename T>
    bool Number(T& value) {
        if (sizeof(T) > remaining_)
            return false;
        value = Wire::Load<T>(next_);
        Advance(sizeof(T));
        return true;
    }
    void Advance(std::size_t count) {
        if (count != 0)
            next_ += count;
        remaining_ -= count;
    }

    const std::uint8_t* next_;
    std::size_t remaining_;
};

// Writes forward. A write that does not fit fails and writes nothing.
class WireWriter {
public:
    WireWriter(void* data, std::size_t size) : start_(static_cast<std::uint8_t*>(data)), size_(size) {}
    explicit WireWriter(WireRoom room) : WireWriter(room.data, room.size) {}

    std::size_t Written() const { return written_; }
    std::size_t Remaining() const { return size_ - written_; }
    [[nodiscard]] bool U8(std::uint8_t value) { return Number(value); }
    [[nodiscard]] bool U16(std::uint16_t value) { return Number(value); }
    [[nodiscard]] bool U32(std::uint32_t value) { return Number(value); }
    [[nodiscard]] bool U64(std::uint64_t value) { return Number(value); }
    [[nodiscard]] bool Zeros(std::size_t count) {
        if (count > Remaining())
            return false;
        if (count != 0)
            std::memset(start_ + written_, 0, count);
        written_ += count;
        return true;
    }
    [[nodiscard]] bool Copy(const void* source, std::size_t count) {
        if (count > Remaining())
            return false;
        if (count != 0)
            std::memcpy(start_ + written_, source, count);
        written_ += count;
        return true;
    }
    [[nodiscard]] bool Copy(WireBytes bytes) { return Copy(bytes.data, bytes.size); }
    // A text in a field of `width` bytes, cut to fit and filled with NULs.
    [[nodiscard]] bool Text(const std::string& text, std::size_t width) {
        if (width > Remaining())
            return false;
        const std::size_t length = text.size() < width ? text.size() : width;
        return Copy(text.data(), length) && Zeros(width - length);
    }

private:
    template <typename T>
    bool Number(T value) {
        if (sizeof(T) > Remaining())
            return false;
        Wire::Store(start_ + written_, value);
        written_ += sizeof(T);
        return true;
    }

    std::uint8_t* start_;
    std::size_t size_;
    std::size_t written_ = 0;
};

} // namespace VX3
