// Images as OpenCV matrices and back, and the operations that OpenCV does on them.
#include "vx3/core/Status.h"
#include "vx3/processing/SaveLoadImage.h"

#include <climits>
#include <cstring>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace VX3 {

namespace {

constexpr int NoType = -1;

int MatTypeOf(PixelFormatValue format) {
    switch (format) {
    case Mono8:
        return CV_8UC1;
    case Mono10:
    case Mono12:
    case Mono14:
    case Mono16:
        return CV_16UC1;
    case RGB8:
    case BGR8:
        return CV_8UC3;
    case RGBa8:
    case BGRa8:
        return CV_8UC4;
    default:
        return NoType;
    }
}

PixelFormatValue FormatOf(int type) {
    switch (type) {
    case CV_8UC1:
        return Mono8;
    case CV_8UC3:
        return BGR8;
    case CV_8UC4:
        return BGRa8;
    case CV_16UC1:
        return Mono16;
    default:
        return InvalidFormat;
    }
}

// OpenCV addresses 16-bit samples at even addresses and row steps only.
bool IsAddressable(const unsigned char* pixels, unsigned int stride, int type) {
    const auto sampleBytes = CV_ELEM_SIZE1(type);
    return reinterpret_cast<std::uintptr_t>(pixels) % sampleBytes == 0 && stride % sampleBytes == 0;
}

cv::Mat CopyRows(const IImage& image, int rows, int cols, int type) {
    cv::Mat mat(rows, cols, type);
    for (int y = 0; y < rows; ++y)
        std::memcpy(mat.ptr(y), image.GetImageBuff(y), mat.elemSize() * static_cast<std::size_t>(cols));
    return mat;
}

void StoreRows(const cv::Mat& mat, IImage& image) {
    for (int y = 0; y < mat.rows; ++y)
        std::memcpy(image.GetImageBuff(y), mat.ptr(y), mat.elemSize() * static_cast<std::size_t>(mat.cols));
}

// `src` with first and third channel exchanged, under the format `to`.
unsigned int ConvertColours(const std::shared_ptr<IImage>& src, std::shared_ptr<IImage>& dst,
                            PixelFormatValue from, PixelFormatValue to, int code) {
    if (src == nullptr || src->GetImageInfo()->pixelFormat != from)
        return static_cast<unsigned int>(Status::NotFound);
    try {
        // Converted beside the images, so that `dst` may be `src` and may have any padding.
        cv::Mat converted;
        cv::cvtColor(Image2Mat(src.get()), converted, code);
        ImageInfo info(*src->GetImageInfo());
        info.pixelFormat = to;
        info.paddingX = 0;
        if (dst == nullptr)
            dst = ImageCreator::Create(&info, nullptr, nullptr);
        if (dst == nullptr)
            return static_cast<unsigned int>(Status::NoBuffer);
        const unsigned int status = dst->UpdateImageInfoC(info.width, info.height, to);
        if (status == static_cast<unsigned int>(Status::Ok))
            StoreRows(converted, *dst);
        return status;
    } catch (const std::exception&) { // cv::Exception, std::bad_alloc
        return static_cast<unsigned int>(Status::NotFound);
    }
}

bool SameShape(const ImageInfo& a, const ImageInfo& b) {
    return a.width == b.width && a.height == b.height && a.pixelFormat == b.pixelFormat;
}

} // namespace

cv::Mat Image2Mat(const IImage* image) {
    if (image == nullptr)
        return {};
    const ImageInfo* info = image->GetImageInfo();
    const int type = MatTypeOf(static_cast<PixelFormatValue>(info->pixelFormat));
    const unsigned char* pixels = image->GetImageBuff();
    if (type == NoType || pixels == nullptr || info->width == 0 || info->height == 0 ||
        info->width > INT_MAX || info->height > INT_MAX)
        return {};
    const int rows = static_cast<int>(info->height);
    const int cols = static_cast<int>(info->width);
    try {
        if (!IsAddressable(pixels, info->Stride(), type))
            return CopyRows(*image, rows, cols, type);
        return {rows, cols, type, const_cast<unsigned char*>(pixels), info->Stride()};
    } catch (const std::exception&) {
        return {};
    }
}

std::unique_ptr<IImage> Mat2Image(cv::Mat& mat, const ImageBaseInfo& base, std::shared_ptr<IImagePool> pool) {
    if (mat.empty() || mat.dims != 2 || FormatOf(mat.type()) == InvalidFormat)
        return nullptr;
    ImageBaseInfo description(base);
    description.width = static_cast<std::uint32_t>(mat.cols);
    description.height = static_cast<std::uint32_t>(mat.rows);
    description.format = FormatOf(mat.type());
    description.paddingX = 0;
    const ImageInfo info = ImageInfoCreator::CreateImageInfo(description);
    std::unique_ptr<IImage> image = ImageCreator::Create(&info, std::move(pool), nullptr);
    if (image != nullptr)
        StoreRows(mat, *image);
    return image;
}

unsigned int SaveLoadImage::ConvertBGR2RGB(const std::shared_ptr<IImage>& src, std::shared_ptr<IImage>& dst) {
    return ConvertColours(src, dst, BGR8, RGB8, cv::COLOR_BGR2RGB);
}

unsigned int SaveLoadImage::ConvertBGRA2RGBA(const std::shared_ptr<IImage>& src,
                                             std::shared_ptr<IImage>& dst) {
    return ConvertColours(src, dst, BGRa8, RGBa8, cv::COLOR_BGRA2RGBA);
}

std::unique_ptr<IImage> SaveLoadImage::ImagesAdd(const std::shared_ptr<IImage>& a,
                                                 const std::shared_ptr<IImage>& b,
                                                 std::shared_ptr<IImagePool> pool) {
    if (a == nullptr || b == nullptr || !SameShape(*a->GetImageInfo(), *b->GetImageInfo()))
        return nullptr;
    try {
        const cv::Mat first = Image2Mat(a.get());
        const cv::Mat second = Image2Mat(b.get());
        if (first.empty() || second.empty())
            return nullptr;
        cv::Mat sum;
        cv::add(first, second, sum);
        const unsigned int depth = PixelFormat(a->GetImageInfo()->pixelFormat).BitDepth();
        if (depth > 8)
            cv::min(sum, (1U << depth) - 1U, sum);
        ImageInfo info(*a->GetImageInfo());
        info.paddingX = 0;
        std::unique_ptr<IImage> image = ImageCreator::Create(&info, std::move(pool), nullptr);
        if (image != nullptr)
            StoreRows(sum, *image);
        return image;
    } catch (const std::exception&) {
        return nullptr;
    }
}

} // namespace VX3
