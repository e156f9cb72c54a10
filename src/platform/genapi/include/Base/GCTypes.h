// Fixed-width types of the GenICam base layer.
#pragma once

#include <cstddef>
#include <cstdint>

namespace GenICam_3_2 {

struct Version_t {
    std::uint16_t Major = 0;
    std::uint16_t Minor = 0;
    std::uint16_t SubMinor = 0;
};

} // namespace GenICam_3_2
