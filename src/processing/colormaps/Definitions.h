// The colour maps as functions of 0..1, as published with matplotlib (gnuplot, Yorick and MATLAB palettes, D.
// A. Green's cubehelix, and the listed maps of S. van der Walt and N. Smith).
#pragma once

#include <array>
#include <functional>
#include <vector>

namespace VX3::ColorMaps {

// Intensity 0..1 (to be clipped) at a position 0..1.
using Channel = std::function<double(double)>;

struct Definition {
    const char* name;
    std::array<Channel, 3> channels; // red, green, blue
};

// In the order of the library's map numbers 0..10; the grey ramp is not among them.
std::vector<Definition> Definitions();

} // namespace VX3::ColorMaps
