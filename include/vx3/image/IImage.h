// An image: header, pixel memory, and the operations of its pixel format.
//
// Filled by one producer thread before it is published, read-only afterwards; not locked. Operations that
// produce images take the pool for the result (empty: the library's default pool) and report failure by an
// empty result.
#pragma once

#include "vx3/core/IObject.h"
#include "vx3/image/HistogramData.h"
#include "vx3/image/IImagePool.h"
#include "vx3/image/ImageInfo.h"
#include "vx3/image/PixelValue.h"
#include "vx3/image/ProfileData.h"

#include <memory>
#include <utility>
#include <vector>

namespace VX3 {

// A region in pixels.
struct VX3_API ROIRect {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

class VX3_API IData : public IObject {
public:
    virtual bool IsNull() const = 0;
};

class VX3_API IImage : public IData {
public:
    virtual const ImageInfo* GetImageInfo() const = 0;
    // The bytes behind the header; null when there are none.
    virtual unsigned char* GetExtraInfoBuff() const = 0;
    virtual const unsigned char* GetImageBuff() const = 0;
    virtual unsigned char* GetImageBuff() = 0;
    // Start of a line; null outside 0 .. height - 1.
    virtual const unsigned char* GetImageBuff(int line) const = 0;
    virtual unsigned char* GetImageBuff(int line) = 0;
    // 16 bits a sample from packed or floating-point mono.
    [[nodiscard]] virtual std::unique_ptr<IImage> Unpack(std::shared_ptr<IImagePool> pool) const = 0;
    // 8 bits a channel: Mono8, RGB8 or RGBa8 by the source's format.
    [[nodiscard]] virtual std::unique_ptr<IImage> Unpack2Image8(unsigned int bits,
                                                                std::shared_ptr<IImagePool> pool) const = 0;
    // False colour (RGBa8) of the samples in [low, low + range].
    [[nodiscard]] virtual std::unique_ptr<IImage> Map2RGB8(unsigned int map, unsigned int low,
                                                           unsigned int range,
                                                           std::shared_ptr<IImagePool> pool) const = 0;
    // Widening left shift by 1..8 bits into Mono16, without saturation.
    [[nodiscard]] virtual std::unique_ptr<IImage> Shift(int bits, std::shared_ptr<IImagePool> pool) const = 0;
    // One monochrome image per channel, in memory order.
    [[nodiscard]] virtual std::vector<std::pair<PixelChannelID, std::unique_ptr<IImage>>>
    Split(unsigned int unused, std::shared_ptr<IImagePool> pool) const = 0;
    // One histogram per channel; a null region is the whole image.
    [[nodiscard]] virtual std::vector<std::pair<PixelChannelID, HistogramData>>
    CreateHistogram(const ROIRect* roi, unsigned int unused) const = 0;
    // One profile per channel: of line or column `index`, or the mean over all when bit 0 of `flags` is set.
    [[nodiscard]] virtual std::vector<std::pair<PixelChannelID, ProfileData>>
    CreateProfile(unsigned int index, ProfileType type, unsigned int flags) const = 0;
    // Always value 0 in Mono8: pixels are reached through the line pointers.
    virtual PixelValue At(unsigned int x, unsigned int y) const = 0;
    [[nodiscard]] virtual std::unique_ptr<IImage> Clone(std::shared_ptr<IImagePool> pool) const = 0;
    // A crop, cut to the image; the whole image when the region starts outside. Packed formats do not crop.
    [[nodiscard]] virtual std::unique_ptr<IImage> Copy(const ROIRect* roi,
                                                       std::shared_ptr<IImagePool> pool) const = 0;
    // Object id of the data buffer; 0 without one.
    virtual std::uint64_t BufferID() const = 0;
    virtual unsigned int MiscValue() const = 0;
    virtual unsigned int SetMiscValue(unsigned int value) = 0;
    virtual bool IsDataContinous() const = 0;
    // Copies min(len, ImageDataSize()) bytes (all of them for len 0); returns the count.
    virtual unsigned int UpdateImageData(const unsigned char* data, unsigned int len) = 0;
    // Replaces the header. NotFound (and nothing changed): header version other than 1, or pixels of that
    // geometry at that dataOffset would not lie inside the pixel memory. NotAvailable: no header given.
    [[nodiscard]] virtual unsigned int UpdateImageInfo(const ImageInfo* info) = 0;
    virtual unsigned int UpdateImageInfoA(unsigned int blockId, unsigned int timestampHigh,
                                          unsigned int timestampLow) = 0;
    virtual unsigned int UpdateImageInfoB(unsigned int statusA, unsigned int lostPackets,
                                          unsigned int statusC) = 0;
    // NotFound (and a 1-line image of format 0) when the data buffer cannot hold the new geometry.
    [[nodiscard]] virtual unsigned int UpdateImageInfoC(unsigned int width, unsigned int height,
                                                        unsigned int format) = 0;
};

class VX3_API ImageCreator {
public:
    // An image from `pool` (empty: the default pool), filled with ImageDataSize() bytes of `data` if not
    // null.
    [[nodiscard]] static std::unique_ptr<IImage>
    Create(const ImageInfo* info, std::shared_ptr<IImagePool> pool, const unsigned char* data);
};

} // namespace VX3
