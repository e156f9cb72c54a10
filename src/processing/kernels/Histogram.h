// Run kernels that count samples.
#pragma once

#include <cstddef>
#include <cstdint>

namespace VX3::Kernels {

// Counts of interleaved channels: channel c of a run is counted in counts[4 * c] .. counts[4 * c + 3], four
// arrays of `bins` entries whose sum is the histogram. Four, so that neighbours of equal value do not wait
// for each other.
struct Counters {
    static constexpr unsigned int MaxChannels = 4;
    static constexpr unsigned int Ways = 4;
    std::uint32_t* counts[MaxChannels * Ways];
    std::uint32_t bins;
};

// The array that sample `i` of a block of whole pixels is counted in.
template <unsigned int Channels>
constexpr std::size_t WayOf(std::size_t i) {
    return Counters::Ways * (i % Channels) + i / Channels % Counters::Ways;
}

// `pixels` pixels of `channels` (1..4) samples. Samples at or above `bins` are not counted. 16-bit samples
// are in host order at any alignment; 8-bit histograms have 256 bins.
void CountLine8(const std::uint8_t* source, std::size_t pixels, unsigned int channels,
                const Counters& counters);
void CountLine16(const std::uint8_t* source, std::size_t pixels, unsigned int channels,
                 const Counters& counters);
// Adds the four arrays of each channel into the first.
void SumCounters(unsigned int channels, const Counters& counters);

namespace Reference {
// These count into the first array of each channel only.
void CountLine8(const std::uint8_t* source, std::size_t pixels, unsigned int channels,
                const Counters& counters);
void CountLine16(const std::uint8_t* source, std::size_t pixels, unsigned int channels,
                 const Counters& counters);
} // namespace Reference

} // namespace VX3::Kernels
