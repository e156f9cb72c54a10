// Samples in image memory: lines may begin at any address, so every access is a copy.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace VX3::Kernels {

template <class T>
inline T Sample(const std::uint8_t* line, std::size_t index) {
    T value;
    std::memcpy(&value, line + index * sizeof(T), sizeof(T));
    return value;
}

template <class T>
inline void PutSample(std::uint8_t* line, std::size_t index, T value) {
    std::memcpy(line + index * sizeof(T), &value, sizeof(T));
}

} // namespace VX3::Kernels
