// What images ask of the pixel algorithms, which lie above them: the processing folder installs itself here
// when the program is loaded. In a program that is linked without it, images hold and move pixels all the
// same, and every such result is empty.
#pragma once

#include "vx3/image/IFormatConvertor.h"

#include <memory>

namespace VX3 {

struct ImageAlgorithms {
    std::unique_ptr<IFormatConvertor> (*convertorOf)(PixelFormat format) = nullptr;
    std::unique_ptr<IImage> (*mapToRgb8)(const IImage& image, unsigned int map, unsigned int low,
                                         unsigned int range, std::shared_ptr<IImagePool> pool) = nullptr;
};

// Before any image is made; not locked.
void InstallImageAlgorithms(const ImageAlgorithms& algorithms);
// What was installed; null pointers without it.
const ImageAlgorithms& InstalledImageAlgorithms();

} // namespace VX3
