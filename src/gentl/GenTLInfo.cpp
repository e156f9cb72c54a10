#include "gentl/GenTLInfo.h"

#include <algorithm>

namespace VX3 {

namespace {

template <typename T>
std::uint64_t As(const unsigned char* bytes) {
    T value{};
    std::memcpy(&value, bytes, sizeof(value));
    return static_cast<std::uint64_t>(value);
}

} // namespace

std::string CleanText(std::string text) {
    std::replace_if(
        text.begin(), text.end(),
        [](char c) { return static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) == 0x7F; },
        '?');
    return text;
}

// The buffer was zero, so that a type which the producer gets wrong by size reads right all the same.
std::uint64_t NumberOf(std::int32_t type, const std::array<unsigned char, 16>& buffer, std::size_t size) {
    const unsigned char* bytes = buffer.data();
    switch (type) {
    case GenTL::INFO_DATATYPE_INT16:
        return size == 2 ? As<std::int16_t>(bytes) : As<std::int64_t>(bytes);
    case GenTL::INFO_DATATYPE_INT32:
        return size == 4 ? As<std::int32_t>(bytes) : As<std::int64_t>(bytes);
    case GenTL::INFO_DATATYPE_BOOL8:
        return As<std::uint64_t>(bytes) != 0 ? 1 : 0;
    default:
        return As<std::uint64_t>(bytes);
    }
}

} // namespace VX3
