// Looks up keys in the configuration memory of IEEE 1212 devices. Pure functions over bytes that may say
// anything.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace GenApi_3_2 {
namespace Engine {

// The 24-bit value of the first entry with this key, in the root directory or one below it. Entries that
// point to registers give the address.
std::optional<std::int64_t> FindRomKey(const std::uint8_t* rom, std::size_t size, std::uint8_t key);

// The text that stands behind the first entry with this key.
std::optional<std::string> FindRomText(const std::uint8_t* rom, std::size_t size, std::uint8_t key);

} // namespace Engine
} // namespace GenApi_3_2
