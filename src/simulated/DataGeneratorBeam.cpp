#include "simulated/DataGeneratorBeam.h"

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace VX3 {

namespace {
constexpr int BeamRadius = 65;
}

DataGeneratorBeam::DataGeneratorBeam(unsigned int size, bool, unsigned int sigma,
                                     std::shared_ptr<IBufferPool>)
    : size_(size),
      side_(2 * size),
      canvas_(std::size_t(side_) * side_),
      random_(std::random_device{}()),
      wander_(0.0, sigma) {
    const int side = static_cast<int>(side_);
    const int centre = static_cast<int>(size_);
    cv::Mat canvas(side, side, CV_8UC1, canvas_.data());
    for (int r = 1; r <= BeamRadius; ++r) {
        const double grey = (std::cos((r - 1) * 3.14 / 64) + 1) * 128 - 0.1;
        cv::circle(canvas, cv::Point(centre, centre), r, cv::Scalar(grey), 2, cv::LINE_8);
    }
}

unsigned int DataGeneratorBeam::DrawOffset() {
    const unsigned int middle = size_ / 2;
    const double offset = std::trunc(middle + wander_(random_));
    return static_cast<unsigned int>(std::clamp(offset, 0.0, side_ - 1.0));
}

void DataGeneratorBeam::GenerateData(unsigned char* buffer, unsigned int width, unsigned int height,
                                     PixelFormat) {
    const unsigned int x = DrawOffset();
    const unsigned int y = DrawOffset();
    const unsigned int columns = std::min({width, size_, side_ - x});
    const unsigned int lines = std::min(height, side_ - y);
    for (unsigned int line = 0; line < lines; ++line) {
        unsigned char* out = buffer + std::size_t(line) * width;
        std::memcpy(out, canvas_.data() + std::size_t(y + line) * side_ + x, columns);
        std::memset(out + columns, 0, width - columns);
    }
    std::memset(buffer + std::size_t(lines) * width, 0, std::size_t(height - lines) * width);
}

} // namespace VX3
