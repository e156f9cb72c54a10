#include "image/AbsImage.h"

#include "image/BufferCreator.h"
#include "image/ImageAlgorithms.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/Logger.h"
#include "vx3/core/Status.h"
#include "vx3/core/Utilities.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace VX3 {

namespace {
constexpr auto ResultOk = static_cast<unsigned int>(Status::Ok);
constexpr auto ResultNotFound = static_cast<unsigned int>(Status::NotFound);
constexpr auto ResultNotAvailable = static_cast<unsigned int>(Status::NotAvailable);
} // namespace

AbsImage::AbsImage(const ImageInfo* info, const unsigned char* data, unsigned int len)
    : object_(TypeIds::Image, ""),
      info_(BufferCreator::Create(info->ImageInfoSize(), nullptr)),
      data_(BufferCreator::Create(info->DataBuffNeeded(), nullptr)),
      pixels_(data_->Pointer()),
      pixelBytes_(data_->BlockSize()) {
    PlaceHeader(*info);
    UseConvertorOf(info->pixelFormat);
    UpdateImageData(data, len);
}

AbsImage::AbsImage(std::unique_ptr<IBuffer>&& data, std::unique_ptr<IBuffer>&& info)
    : object_(TypeIds::Image, ""), info_(std::move(info)), data_(std::move(data)) {
    ImageInfo header;
    if (info_ != nullptr && info_->BlockSize() >= ImageInfo::HeaderSize)
        std::memcpy(static_cast<void*>(&header), info_->Pointer(), ImageInfo::HeaderSize);
    if (info_ == nullptr || info_->BlockSize() < header.ImageInfoSize() || !header.SizesFit()) {
        header = ImageInfo();
        info_ = BufferCreator::Create(ImageInfo::HeaderSize, nullptr);
    }
    if (data_ != nullptr) {
        pixels_ = data_->Pointer();
        pixelBytes_ = data_->BlockSize();
    }
    header_ = new (info_->Pointer()) ImageInfo(header); // placed: the extra information behind it stays
    UseConvertorOf(header.pixelFormat);
}

AbsImage::AbsImage(unsigned int width, unsigned int height, PixelFormatValue format, unsigned int padding,
                   unsigned char* data, bool)
    : object_(TypeIds::Image, "Image from buffer"),
      info_(BufferCreator::Create(ImageInfo::HeaderSize, nullptr)),
      pixels_(data) {
    ImageInfo header;
    header.width = width;
    header.height = height;
    header.paddingX = static_cast<std::uint16_t>(padding);
    header.pixelFormat = format;
    if (data != nullptr)
        pixelBytes_ = static_cast<std::uint64_t>(header.Stride()) * height;
    PlaceHeader(header);
    UseConvertorOf(format);
}

AbsImage::~AbsImage() = default;

void AbsImage::PlaceHeader(const ImageInfo& info) {
    header_ = new (info_->Pointer()) ImageInfo(info);
    if (info.extraInfoSize > info_->BlockSize() - ImageInfo::HeaderSize)
        header_->extraInfoSize = 0;
    std::memset(info_->Pointer() + ImageInfo::HeaderSize, 0, header_->extraInfoSize);
}

void AbsImage::UseConvertorOf(PixelFormat format) {
    const auto create = InstalledImageAlgorithms().convertorOf;
    if (create != nullptr && (convertor_ == nullptr || convertor_->Format() != format))
        convertor_ = create(format);
}

bool AbsImage::Holds(const ImageInfo& info) const {
    return info.SizesFit() &&
           static_cast<std::uint64_t>(info.dataOffset) + info.ImageDataSize() <= pixelBytes_;
}

bool AbsImage::IsReadable() const {
    return PixelFormat(header_->pixelFormat).IsValid() && Holds(*header_);
}

unsigned char* AbsImage::GetExtraInfoBuff() const {
    return header_->extraInfoSize != 0 ? info_->Pointer() + ImageInfo::HeaderSize : nullptr;
}

const unsigned char* AbsImage::GetImageBuff() const {
    return pixels_ != nullptr ? pixels_ + header_->dataOffset : nullptr;
}

unsigned char* AbsImage::GetImageBuff() {
    return pixels_ != nullptr ? pixels_ + header_->dataOffset : nullptr;
}

const unsigned char* AbsImage::GetImageBuff(int line) const {
    if (line < 0 || static_cast<std::uint32_t>(line) >= header_->height || pixels_ == nullptr)
        return nullptr;
    return GetImageBuff() + static_cast<std::size_t>(line) * header_->Stride();
}

unsigned char* AbsImage::GetImageBuff(int line) {
    return const_cast<unsigned char*>(static_cast<const AbsImage*>(this)->GetImageBuff(line));
}

std::unique_ptr<IImage> AbsImage::Unpack(std::shared_ptr<IImagePool> pool) const {
    return IsConvertible() ? convertor_->Unpack(this, 0, std::move(pool)) : nullptr;
}

std::unique_ptr<IImage> AbsImage::Unpack2Image8(unsigned int bits, std::shared_ptr<IImagePool> pool) const {
    return IsConvertible() ? convertor_->Unpack2Image8(this, bits, std::move(pool)) : nullptr;
}

std::unique_ptr<IImage> AbsImage::Map2RGB8(unsigned int map, unsigned int low, unsigned int range,
                                           std::shared_ptr<IImagePool> pool) const {
    const auto mapImage = InstalledImageAlgorithms().mapToRgb8;
    return mapImage != nullptr && IsReadable() ? mapImage(*this, map, low, range, std::move(pool)) : nullptr;
}

std::vector<std::pair<PixelChannelID, std::unique_ptr<IImage>>>
AbsImage::Split(unsigned int unused, std::shared_ptr<IImagePool> pool) const {
    if (!IsConvertible())
        return {};
    return convertor_->Split(this, unused, std::move(pool));
}

std::vector<std::pair<PixelChannelID, HistogramData>> AbsImage::CreateHistogram(const ROIRect* roi,
                                                                                unsigned int unused) const {
    if (!IsConvertible())
        return {};
    return convertor_->CreateHistogram(this, roi, unused);
}

std::vector<std::pair<PixelChannelID, ProfileData>>
AbsImage::CreateProfile(unsigned int index, ProfileType type, unsigned int flags) const {
    if (!IsConvertible())
        return {};
    return convertor_->CreateProfile(this, type, index, flags);
}

PixelValue AbsImage::At(unsigned int, unsigned int) const {
    return {0U, PixelFormat(Mono8)};
}

std::unique_ptr<IImage> AbsImage::Clone(std::shared_ptr<IImagePool> pool) const {
    return IsReadable() ? ImageCreator::Create(header_, std::move(pool), GetImageBuff()) : nullptr;
}

unsigned int AbsImage::SetMiscValue(unsigned int value) {
    miscValue_ = value;
    return ResultOk;
}

unsigned int AbsImage::UpdateImageData(const unsigned char* data, unsigned int len) {
    if (data == nullptr || pixels_ == nullptr || header_->dataOffset > pixelBytes_)
        return 0;
    const unsigned int size = header_->ImageDataSize();
    const std::uint64_t room = pixelBytes_ - header_->dataOffset;
    const auto count =
        static_cast<unsigned int>(std::min<std::uint64_t>(len == 0 ? size : std::min(len, size), room));
    std::memcpy(GetImageBuff(), data, count);
    return count;
}

unsigned int AbsImage::UpdateImageInfo(const ImageInfo* info) {
    if (info == nullptr)
        return ResultNotAvailable;
    if (info->headerVersion != 1 || !Holds(*info))
        return ResultNotFound;
    const ImageInfo header(*info); // `info` may lie in the buffer that goes now
    if (header.ImageInfoSize() > info_->BlockSize())
        info_ = BufferCreator::Create(header.ImageInfoSize(), nullptr);
    PlaceHeader(header);
    UseConvertorOf(header.pixelFormat);
    return ResultOk;
}

unsigned int AbsImage::UpdateImageInfoA(unsigned int blockId, unsigned int timestampHigh,
                                        unsigned int timestampLow) {
    header_->timestampHigh = timestampHigh;
    header_->timestampLow = timestampLow;
    header_->blockId = blockId;
    return ResultOk;
}

unsigned int AbsImage::UpdateImageInfoB(unsigned int statusA, unsigned int lostPackets,
                                        unsigned int statusC) {
    header_->statusA = statusA;
    header_->lostPackets = lostPackets;
    header_->statusC = statusC;
    return ResultOk;
}

unsigned int AbsImage::UpdateImageInfoC(unsigned int width, unsigned int height, unsigned int format) {
    header_->width = width;
    header_->height = height;
    header_->pixelFormat = format;
    if (header_->SizesFit() && BufferSize() >= header_->DataBuffNeeded()) {
        UseConvertorOf(format);
        return ResultOk;
    }
    const std::uint64_t needed = header_->SizesFit() ? header_->DataBuffNeeded() : 0;
    header_->height = 1;
    header_->statusA = 1;
    header_->pixelFormat = InvalidFormat;
    UseConvertorOf(InvalidFormat);
    VxLoggerLog(LogLevel::Error, "SDK",
                "UpdateimageInfoC with invalid data, width: %d height: %d format: %x: %s",
                static_cast<int>(width), static_cast<int>(height), format,
                needed == 0 ? "no image has these sizes"
                            : StringFormat("%llu bytes are needed, the image holds %u",
                                           static_cast<unsigned long long>(needed), BufferSize())
                                  .c_str());
    return ResultNotFound;
}

} // namespace VX3
