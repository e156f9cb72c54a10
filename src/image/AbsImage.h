// The image: a header and pixel memory in pool buffers (or the caller's pixels), and the converter of its
// pixel format. Whatever its header is told, no operation reaches outside the pixel memory.
#pragma once

#include "core/ObjectAbs.h"
#include "vx3/image/IBuffer.h"
#include "vx3/image/IImage.h"

namespace VX3 {

class IFormatConvertor;

class AbsImage : public IImage {
public:
    // Own buffers from the default simple pool; copies min(len, ImageDataSize()) bytes of `data` if not null
    // (all of them for len 0). Raises std::bad_alloc.
    AbsImage(const ImageInfo* info, const unsigned char* data, unsigned int len);
    // Adopts two buffers; the info buffer holds the header already.
    AbsImage(std::unique_ptr<IBuffer>&& data, std::unique_ptr<IBuffer>&& info);
    // Wraps the caller's pixels, who keeps them alive; such an image has no data buffer (IsNull). The last
    // argument has no effect.
    AbsImage(unsigned int width, unsigned int height, PixelFormatValue format, unsigned int padding,
             unsigned char* data, bool unused);
    ~AbsImage() override;
    AbsImage(const AbsImage&) = delete;
    AbsImage& operator=(const AbsImage&) = delete;

    // Bytes of the data buffer; 0 without one.
    unsigned int BufferSize() const { return data_ != nullptr ? data_->BlockSize() : 0; }

    std::string Name() const override { return object_.Name(); }
    std::uint64_t ObjID() const override { return object_.ObjID(); }
    bool IsConfigurable() const override { return object_.IsConfigurable(); }
    IConfigurer* GetConfigurer() override { return object_.GetConfigurer(); }
    unsigned int ObjType() const override { return object_.ObjType(); }
    std::list<std::pair<std::string, std::string>> GetInfo() const override { return object_.GetInfo(); }
    unsigned int TypeId() const override { return object_.TypeId(); }

    bool IsNull() const override { return data_ == nullptr; }
    const ImageInfo* GetImageInfo() const override { return header_; }
    unsigned char* GetExtraInfoBuff() const override;
    const unsigned char* GetImageBuff() const override;
    unsigned char* GetImageBuff() override;
    const unsigned char* GetImageBuff(int line) const override;
    unsigned char* GetImageBuff(int line) override;
    std::unique_ptr<IImage> Unpack(std::shared_ptr<IImagePool> pool) const override;
    std::unique_ptr<IImage> Unpack2Image8(unsigned int bits, std::shared_ptr<IImagePool> pool) const override;
    std::unique_ptr<IImage> Map2RGB8(unsigned int map, unsigned int low, unsigned int range,
                                     std::shared_ptr<IImagePool> pool) const override;
    std::unique_ptr<IImage> Shift(int bits, std::shared_ptr<IImagePool> pool) const override;
    std::vector<std::pair<PixelChannelID, std::unique_ptr<IImage>>>
    Split(unsigned int unused, std::shared_ptr<IImagePool> pool) const override;
    std::vector<std::pair<PixelChannelID, HistogramData>> CreateHistogram(const ROIRect* roi,
                                                                          unsigned int unused) const override;
    std::vector<std::pair<PixelChannelID, ProfileData>> CreateProfile(unsigned int index, ProfileType type,
                                                                      unsigned int flags) const override;
    PixelValue At(unsigned int x, unsigned int y) const override;
    std::unique_ptr<IImage> Clone(std::shared_ptr<IImagePool> pool) const override;
    std::unique_ptr<IImage> Copy(const ROIRect* roi, std::shared_ptr<IImagePool> pool) const override;
    std::uint64_t BufferID() const override { return data_ != nullptr ? data_->ObjID() : 0; }
    unsigned int MiscValue() const override { return miscValue_; }
    unsigned int SetMiscValue(unsigned int value) override;
    bool IsDataContinous() const override { return true; }
    unsigned int UpdateImageData(const unsigned char* data, unsigned int len) override;
    unsigned int UpdateImageInfo(const ImageInfo* info) override;
    unsigned int UpdateImageInfoA(unsigned int blockId, unsigned int timestampHigh,
                                  unsigned int timestampLow) override;
    unsigned int UpdateImageInfoB(unsigned int statusA, unsigned int lostPackets,
                                  unsigned int statusC) override;
    unsigned int UpdateImageInfoC(unsigned int width, unsigned int height, unsigned int format) override;

private:
    void PlaceHeader(const ImageInfo& info);
    void UseConvertorOf(PixelFormat format);
    // Whether pixels of that geometry lie inside the pixel memory.
    bool Holds(const ImageInfo& info) const;
    // Holds() of the present header, with a usable format: what every operation on pixels asks first.
    bool IsReadable() const;
    bool IsConvertible() const { return convertor_ != nullptr && IsReadable(); }

    ObjectAbs object_;
    std::unique_ptr<IBuffer> info_;
    std::unique_ptr<IBuffer> data_;
    std::shared_ptr<IFormatConvertor>
        convertor_;                   // that of the header's format, when algorithms are installed
    ImageInfo* header_ = nullptr;     // in info_
    unsigned char* pixels_ = nullptr; // data_'s, or the caller's
    std::uint64_t pixelBytes_ = 0;    // how many there are
    unsigned int miscValue_ = 0;
};

} // namespace VX3
