// Hands the pixel algorithms to the images below, when the program that they are linked into is loaded.
#include "image/ImageAlgorithms.h"

namespace VX3 {

namespace {

const bool g_installed = [] {
    InstallImageAlgorithms({FormatConvertorCreator::Create, MapImage2RGB8});
    return true;
}();

} // namespace
} // namespace VX3

// Nobody calls this unit: the archive's link options name the symbol, so that a linker takes it all the same.
extern "C" bool vx3_image_algorithms();
extern "C" bool vx3_image_algorithms() {
    return VX3::g_installed;
}
