// Counts characters eight at a time, so that sizing up a text costs little beside parsing it.
#pragma once

#include <cstddef>
#include <string_view>

namespace GenApi_3_2 {
namespace Engine {

std::size_t CountByte(std::string_view text, char wanted);
// How often `first` is directly followed by `second`.
std::size_t CountPair(std::string_view text, char first, char second);

} // namespace Engine
} // namespace GenApi_3_2
