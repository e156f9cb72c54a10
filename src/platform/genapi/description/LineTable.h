// Finds the line of an offset in a text that is about to be parsed in place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

class LineTable {
public:
    explicit LineTable(std::string_view text);
    // The line, from 1, of the character at `offset`. Fast when asked in ascending order.
    std::uint32_t LineOf(std::size_t offset);

private:
    std::vector<std::uint32_t> ends_; // offsets of the line feeds
    std::size_t last_ = 0;            // line feeds before the offset asked for last
};

} // namespace Engine
} // namespace GenApi_3_2
