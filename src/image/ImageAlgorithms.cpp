#include "image/ImageAlgorithms.h"

namespace VX3 {

namespace {

// Constant-initialised, so that it is there before whoever installs from a static initialiser.
ImageAlgorithms g_algorithms;

} // namespace

void InstallImageAlgorithms(const ImageAlgorithms& algorithms) {
    g_algorithms = algorithms;
}

const ImageAlgorithms& InstalledImageAlgorithms() {
    return g_algorithms;
}

} // namespace VX3
