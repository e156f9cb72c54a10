// How numbers lie in registers: byte order, sign and bit fields. Pure functions.
#pragma once

#include <cstddef>
#include <cstdint>

namespace GenApi_3_2 {
namespace Engine {

// A field of a register of up to 8 bytes. Bit positions count from the least significant bit of the value.
struct BitField {
    unsigned shift = 0;
    unsigned width = 64;
    bool isSigned = false;

    std::uint64_t Mask() const; // in place
    std::int64_t Extract(std::uint64_t registerValue) const;
    // `registerValue` with the field replaced.
    std::uint64_t Insert(std::uint64_t registerValue, std::int64_t fieldValue) const;
    std::int64_t Min() const;
    std::int64_t Max() const;
    bool Holds(std::int64_t value) const;
};

// The field that the bits `lsb` to `msb` of a register of `length` bytes name. Big-endian registers count
// from the most significant bit. False when the bits lie outside the register.
bool MakeBitField(std::size_t length, bool isBigEndian, std::uint64_t lsb, std::uint64_t msb, bool isSigned,
                  BitField& field);

// `length` is 1 to 8.
std::uint64_t LoadBytes(const std::uint8_t* bytes, std::size_t length, bool isBigEndian);
void StoreBytes(std::uint8_t* bytes, std::size_t length, bool isBigEndian, std::uint64_t value);

} // namespace Engine
} // namespace GenApi_3_2
