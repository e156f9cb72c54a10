#include "platform/genapi/registers/RegisterBits.h"

#include <limits>
#include <utility>

namespace GenApi_3_2 {
namespace Engine {
namespace {

std::uint64_t LowBits(unsigned width) {
    return width >= 64 ? ~std::uint64_t(0) : (std::uint64_t(1) << width) - 1;
}

} // namespace

std::uint64_t BitField::Mask() const {
    return LowBits(width) << shift;
}

std::int64_t BitField::Extract(std::uint64_t registerValue) const {
    std::uint64_t value = (registerValue >> shift) & LowBits(width);
    if (isSigned && width < 64 && (value >> (width - 1)) != 0)
        value |= ~LowBits(width);
    return static_cast<std::int64_t>(value);
}

std::uint64_t BitField::Insert(std::uint64_t registerValue, std::int64_t fieldValue) const {
    return (registerValue & ~Mask()) | ((static_cast<std::uint64_t>(fieldValue) & LowBits(width)) << shift);
}

std::int64_t BitField::Min() const {
    if (!isSigned)
        return 0;
    return width >= 64 ? std::numeric_limits<std::int64_t>::min()
                       : -static_cast<std::int64_t>(std::uint64_t(1) << (width - 1));
}

std::int64_t BitField::Max() const {
    // The upper half of an unsigned 64-bit register does not fit the signed values of the interface.
    if (width >= 64)
        return std::numeric_limits<std::int64_t>::max();
    return static_cast<std::int64_t>(LowBits(isSigned ? width - 1 : width));
}

bool BitField::Holds(std::int64_t value) const {
    return width >= 64 || (value >= Min() && value <= Max());
}

bool MakeBitField(std::size_t length, bool isBigEndian, std::uint64_t lsb, std::uint64_t msb, bool isSigned,
                  BitField& field) {
    const std::uint64_t bits = 8 * static_cast<std::uint64_t>(length);
    if (bits == 0 || bits > 64 || lsb >= bits || msb >= bits)
        return false;
    std::uint64_t low = isBigEndian ? bits - 1 - lsb : lsb;
    std::uint64_t high = isBigEndian ? bits - 1 - msb : msb;
    // Some descriptions give the two ends the other way round.
    if (low > high)
        std::swap(low, high);
    field.shift = static_cast<unsigned>(low);
    field.width = static_cast<unsigned>(high - low + 1);
    field.isSigned = isSigned;
    return true;
}

std::uint64_t LoadBytes(const std::uint8_t* bytes, std::size_t length, bool isBigEndian) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < length; ++i)
        value = (value << 8) | bytes[isBigEndian ? i : length - 1 - i];
    return value;
}

void StoreBytes(std::uint8_t* bytes, std::size_t length, bool isBigEndian, std::uint64_t value) {
    for (std::size_t i = 0; i < length; ++i, value >>= 8)
        bytes[isBigEndian ? length - 1 - i : i] = static_cast<std::uint8_t>(value);
}

} // namespace Engine
} // namespace GenApi_3_2
