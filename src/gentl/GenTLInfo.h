// What a producer's info functions answer, read as the standard negotiates sizes and types and as producers
// really do it: nothing that a producer says about sizes is believed.
#pragma once

#include "platform/gentl/GenTL.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace VX3 {

// The text with control characters replaced, for logs and terminals.
std::string CleanText(std::string text);

// The number in `buffer`, of which the producer says that it has that type and size. Integers of all sizes,
// booleans and pointers.
std::uint64_t NumberOf(std::int32_t type, const std::array<unsigned char, 16>& buffer, std::size_t size);

// `query(std::int32_t* type, void* buffer, std::size_t* size)` is one call of an info function.
template <typename Query>
GenTL::GC_ERROR ReadNumber(std::uint64_t& value, Query query) {
    std::array<unsigned char, 16> buffer{};
    std::size_t size = 8;
    std::int32_t type = GenTL::INFO_DATATYPE_UNKNOWN;
    const GenTL::GC_ERROR code = query(&type, static_cast<void*>(buffer.data()), &size);
    if (code == GenTL::GC_ERR_SUCCESS)
        value = NumberOf(type, buffer, size);
    return code;
}

// Up to the first NUL. Longer texts than `MaxText` are refused as the producer's BUFFER_TOO_SMALL.
template <typename Query>
GenTL::GC_ERROR ReadText(std::string& text, Query query) {
    constexpr std::size_t FirstTry = 1024;
    constexpr std::size_t MaxText = 65536;
    GenTL::GC_ERROR code = GenTL::GC_ERR_ERROR;
    for (std::size_t room = FirstTry; room <= MaxText;) {
        std::vector<char> buffer(room + 1);
        std::size_t size = room;
        std::int32_t type = GenTL::INFO_DATATYPE_UNKNOWN;
        code = query(&type, static_cast<void*>(buffer.data()), &size);
        buffer.back() = '\0';
        if (code == GenTL::GC_ERR_SUCCESS)
            text = buffer.data();
        if (code != GenTL::GC_ERR_BUFFER_TOO_SMALL)
            return code;
        // What the size holds after the error means nothing: ask, or try more.
        std::size_t needed = 0;
        if (query(&type, nullptr, &needed) != GenTL::GC_ERR_SUCCESS || needed <= room)
            needed = room * 4;
        room = needed;
    }
    return code;
}

} // namespace VX3
