#include "vx3/processing/SaveLoadImage.h"

#include "image/AbsImage.h"
#include "processing/FileBytes.h"
#include "processing/ImageFileName.h"
#include "processing/PictureForm.h"
#include "vx3/core/LastFailure.h"
#include "vx3/core/Utilities.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <opencv2/imgcodecs.hpp>
#include <system_error>

namespace VX3 {

namespace {

constexpr auto ResultOk = static_cast<unsigned int>(Status::Ok);
constexpr auto ResultNoImage = static_cast<unsigned int>(Status::NotFound);
constexpr auto ResultNotRepresentable = static_cast<unsigned int>(Status::NotAvailable);
constexpr auto ResultRefused = static_cast<unsigned int>(Status::WrongState);

unsigned int Refuse(unsigned int code, const std::string& text) {
    return static_cast<unsigned int>(SetLastFailure(static_cast<StatusCode>(code), text));
}

// A reason why nothing was loaded.
std::nullptr_t NotLoaded(StatusCode code, const std::string& text) {
    SetLastFailure(code, text);
    return nullptr;
}

std::string ErrorText() {
    return std::system_category().message(errno);
}

std::string FormatText(const IImage& image) {
    return PixelFormat(image.GetImageInfo()->pixelFormat).ToString();
}

unsigned int WriteFile(const std::string& path, const unsigned char* data, std::size_t size) {
    return WriteWholeFile(path, data, size) ? ResultOk : Refuse(ResultRefused, path + ": " + ErrorText());
}

unsigned int SavePicture(const std::shared_ptr<const IImage>& image, const ImageFileName& name,
                         const std::string& path) {
    const std::shared_ptr<const IImage> form = PictureForm(image, name.Extension());
    const cv::Mat mat = Image2Mat(form.get());
    if (mat.empty())
        return Refuse(ResultNotRepresentable,
                      path + ": images of format " + FormatText(*image) + " fit no picture, only a raw file");
    // Encoded in memory and written here: the codecs do not notice a full disk.
    std::vector<unsigned char> bytes;
    if (!cv::imencode("." + name.Extension(), mat, bytes) || bytes.empty())
        return Refuse(ResultRefused, path + ": the codec refuses the image");
    return WriteFile(path, bytes.data(), bytes.size());
}

unsigned int SaveRaw(const IImage& image, const std::string& path) {
    const ImageInfo* info = image.GetImageInfo();
    const unsigned char* pixels = image.GetImageBuff();
    if (!PixelFormat(info->pixelFormat).IsValid() || pixels == nullptr)
        return Refuse(ResultNotRepresentable, path + ": the image has no pixels");
    return WriteFile(path, pixels, info->ImageDataSize());
}

// 16-bit samples from the other byte order; formats of another sample width stay.
void SwapSamples(IImage& image) {
    const ImageInfo* info = image.GetImageInfo();
    const PixelFormat format(info->pixelFormat);
    if (format.IsPacked() || format.BitDepth() <= 8)
        return;
    const std::size_t bytes = format.BuffNeeded(info->width, 1);
    for (int y = 0; static_cast<std::uint32_t>(y) < info->height; ++y) {
        unsigned char* line = image.GetImageBuff(y);
        for (std::size_t i = 0; i + 1 < bytes; i += 2)
            std::swap(line[i], line[i + 1]);
    }
}

// How many bytes behind GetImageBuff() a file may fill: only the recycle pool is known to give the slack.
std::size_t RoomOf(const IImage& image, const IImagePool* pool) {
    const bool recycle = pool == nullptr || pool->PoolType() == 2;
    const ImageInfo* info = image.GetImageInfo();
    return recycle ? info->DataBuffNeeded() - info->dataOffset : info->ImageDataSize();
}

// An image for `length` bytes that are there. Fewer than it has pixels would leave another image's in the
// rest.
std::unique_ptr<IImage> CreateRaw(const ImageBaseInfo& base, std::size_t length, const std::string& source,
                                  const std::shared_ptr<IImagePool>& pool) {
    if (!base.format.IsValid() || base.width == 0 || base.height == 0 || base.paddingX > UINT16_MAX)
        return NotLoaded(Status::NotFound, source + ": nothing says width, height and pixel format");
    const ImageInfo info = ImageInfoCreator::CreateImageInfo(base);
    if (!info.SizesFit())
        return NotLoaded(Status::NotFound, source + ": the image would be too large");
    if (length < info.ImageDataSize())
        return NotLoaded(Status::NotAvailable,
                         StringFormat("%s: has %zu bytes, %u x %u pixels of %s need %u", source.c_str(),
                                      length, info.width, info.height, base.format.ToString().c_str(),
                                      info.ImageDataSize()));
    return ImageCreator::Create(&info, pool, nullptr);
}

std::unique_ptr<IImage> LoadRaw(int fd, std::size_t length, const ImageBaseInfo& base,
                                const std::string& path, const std::shared_ptr<IImagePool>& pool) {
    std::unique_ptr<IImage> image = CreateRaw(base, length, path, pool);
    if (image == nullptr)
        return nullptr;
    const std::size_t wanted = std::min(length, RoomOf(*image, pool.get()));
    if (ReadUpTo(fd, image->GetImageBuff(), wanted) != wanted)
        return NotLoaded(Status::WrongState, path + ": " + ErrorText());
    if (base.bigEndian != 0)
        SwapSamples(*image);
    return image;
}

// What a failing codec or an exhausted memory turns into at this class's boundary.
template <typename Result, typename Operation>
Result Guarded(Result failure, Operation operation) {
    try {
        return operation();
    } catch (const std::exception& error) { // cv::Exception, std::bad_alloc
        SetLastFailure(static_cast<StatusCode>(failure), error.what());
        return failure;
    }
}

template <typename Operation>
std::unique_ptr<IImage> GuardedImage(Operation operation) {
    try {
        return operation();
    } catch (const std::exception& error) {
        return NotLoaded(Status::NoBuffer, error.what());
    }
}

} // namespace

unsigned int SaveLoadImage::Save2File(const std::shared_ptr<IImage>& image, const std::string& path,
                                      unsigned int mode) {
    if (image == nullptr)
        return Refuse(ResultNoImage, path + ": there is no image to save");
    return Guarded(ResultRefused, [&] {
        const ImageFileName name(path);
        if (name.IsPicture())
            return SavePicture(image, name, path);
        return SaveRaw(*image, mode == 1 ? name.WithDescription(*image->GetImageInfo()) : path);
    });
}

std::unique_ptr<IImage> SaveLoadImage::LoadFromFile(const std::string& path, const ImageBaseInfo* base,
                                                    std::shared_ptr<IImagePool> pool) {
    return GuardedImage([&]() -> std::unique_ptr<IImage> {
        const ImageFileName name(path);
        const ImageBaseInfo description = name.Describe(base);
        std::size_t length = 0;
        const UniqueFd fd = OpenForReading(path, length);
        if (!fd)
            return NotLoaded(Status::NotFound, path + ": is no file that can be read");
        if (!name.IsPicture())
            return LoadRaw(fd.Get(), length, description, path, pool);
        cv::Mat mat = cv::imread(path, cv::IMREAD_COLOR);
        if (mat.empty())
            return NotLoaded(Status::NotAvailable, path + ": is no picture of its kind");
        return Mat2Image(mat, description, pool);
    });
}

std::unique_ptr<IImage> SaveLoadImage::LoadFromBuffer(const unsigned char* data, std::size_t size,
                                                      const ImageBaseInfo* base,
                                                      std::shared_ptr<IImagePool> pool) {
    if (data == nullptr || size == 0)
        return nullptr;
    return GuardedImage([&]() -> std::unique_ptr<IImage> {
        if (base == nullptr) {
            const std::vector<unsigned char> bytes(data, data + size);
            cv::Mat mat = cv::imdecode(bytes, cv::IMREAD_COLOR);
            return Mat2Image(mat, ImageBaseInfo(), pool);
        }
        std::unique_ptr<IImage> image = CreateRaw(*base, size, "the buffer", pool);
        if (image == nullptr)
            return nullptr;
        std::memcpy(image->GetImageBuff(), data, std::min(size, RoomOf(*image, pool.get())));
        if (base->bigEndian != 0)
            SwapSamples(*image);
        return image;
    });
}

std::unique_ptr<IImage> SaveLoadImage::WrapFromBuffer(unsigned char* data, unsigned int width,
                                                      unsigned int height, PixelFormatValue format,
                                                      unsigned int padding) {
    ImageBaseInfo base;
    base.width = width;
    base.height = height;
    base.format = format;
    base.paddingX = padding;
    if (data == nullptr || width == 0 || height == 0 || padding > UINT16_MAX ||
        !ImageInfoCreator::CreateImageInfo(base).SizesFit())
        return nullptr;
    return GuardedImage([&]() -> std::unique_ptr<IImage> {
        return std::make_unique<AbsImage>(width, height, format, padding, data, false);
    });
}

} // namespace VX3
