// The beam test pattern: a bright round spot that fades to black and wanders around the frame's centre. Owned
// by an image generator; one thread at a time.
#pragma once

#include "vx3/image/IBufferPool.h"
#include "vx3/image/PixelFormat.h"

#include <cstdint>
#include <memory>
#include <random>
#include <vector>

namespace VX3 {

class DataGeneratorBeam {
public:
    // The spot wanders by `sigma` pixels (normal distribution) in frames meant for `size` x `size` pixels.
    // The flag and the pool play no part in the pattern.
    DataGeneratorBeam(unsigned int size, bool unused, unsigned int sigma, std::shared_ptr<IBufferPool> pool);

    // Fills width x height bytes with 8-bit grey, whatever the format; what the pattern does not cover is
    // black.
    void GenerateData(unsigned char* buffer, unsigned int width, unsigned int height, PixelFormat format);
    // The pattern has no state to go back to.
    void Reset() {}

private:
    unsigned int DrawOffset();

    unsigned int size_;
    unsigned int side_; // of the square canvas
    std::vector<unsigned char> canvas_;
    std::mt19937 random_;
    std::normal_distribution<double> wander_;
};

} // namespace VX3
