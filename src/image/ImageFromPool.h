// What a pool hands out: forwards to the inner image and gives it back to the pool on destruction.
#pragma once

#include "vx3/image/IImage.h"

namespace VX3 {

class ImageFromPool : public IImage {
public:
    ImageFromPool(std::unique_ptr<IImage>&& image, std::shared_ptr<IImagePool> pool)
        : image_(std::move(image)), pool_(std::move(pool)) {}
    ~ImageFromPool() override;
    ImageFromPool(const ImageFromPool&) = delete;
    ImageFromPool& operator=(const ImageFromPool&) = delete;

    std::string Name() const override { return image_->Name(); }
    std::uint64_t ObjID() const override { return image_->ObjID(); }
    bool IsConfigurable() const override { return image_->IsConfigurable(); }
    IConfigurer* GetConfigurer() override { return image_->GetConfigurer(); }
    unsigned int ObjType() const override { return image_->ObjType(); }
    std::list<std::pair<std::string, std::string>> GetInfo() const override { return image_->GetInfo(); }
    unsigned int TypeId() const override { return image_->TypeId(); }

    bool IsNull() const override { return image_->IsNull(); }
    const ImageInfo* GetImageInfo() const override { return image_->GetImageInfo(); }
    unsigned char* GetExtraInfoBuff() const override { return image_->GetExtraInfoBuff(); }
    const unsigned char* GetImageBuff() const override {
        return static_cast<const IImage&>(*image_).GetImageBuff();
    }
    unsigned char* GetImageBuff() override { return image_->GetImageBuff(); }
    const unsigned char* GetImageBuff(int line) const override {
        return static_cast<const IImage&>(*image_).GetImageBuff(line);
    }
    unsigned char* GetImageBuff(int line) override { return image_->GetImageBuff(line); }
    std::unique_ptr<IImage> Unpack(std::shared_ptr<IImagePool> pool) const override {
        return image_->Unpack(std::move(pool));
    }
    std::unique_ptr<IImage> Unpack2Image8(unsigned int bits,
                                          std::shared_ptr<IImagePool> pool) const override {
        return image_->Unpack2Image8(bits, std::move(pool));
    }
    std::unique_ptr<IImage> Map2RGB8(unsigned int map, unsigned int low, unsigned int range,
                                     std::shared_ptr<IImagePool> pool) const override {
        return image_->Map2RGB8(map, low, range, std::move(pool));
    }
    std::unique_ptr<IImage> Shift(int bits, std::shared_ptr<IImagePool> pool) const override {
        return image_->Shift(bits, std::move(pool));
    }
    std::vector<std::pair<PixelChannelID, std::unique_ptr<IImage>>>
    Split(unsigned int unused, std::shared_ptr<IImagePool> pool) const override {
        return image_->Split(unused, std::move(pool));
    }
    std::vector<std::pair<PixelChannelID, HistogramData>>
    CreateHistogram(const ROIRect* roi, unsigned int unused) const override {
        return image_->CreateHistogram(roi, unused);
    }
    std::vector<std::pair<PixelChannelID, ProfileData>> CreateProfile(unsigned int index, ProfileType type,
                                                                      unsigned int flags) const override {
        return image_->CreateProfile(index, type, flags);
    }
    PixelValue At(unsigned int x, unsigned int y) const override { return image_->At(x, y); }
    std::unique_ptr<IImage> Clone(std::shared_ptr<IImagePool> pool) const override {
        return image_->Clone(std::move(pool));
    }
    std::unique_ptr<IImage> Copy(const ROIRect* roi, std::shared_ptr<IImagePool> pool) const override {
        return image_->Copy(roi, std::move(pool));
    }
    std::uint64_t BufferID() const override { return image_->BufferID(); }
    unsigned int MiscValue() const override { return image_->MiscValue(); }
    unsigned int SetMiscValue(unsigned int value) override { return image_->SetMiscValue(value); }
    bool IsDataContinous() const override { return image_->IsDataContinous(); }
    unsigned int UpdateImageData(const unsigned char* data, unsigned int len) override {
        return image_->UpdateImageData(data, len);
    }
    unsigned int UpdateImageInfo(const ImageInfo* info) override { return image_->UpdateImageInfo(info); }
    unsigned int UpdateImageInfoA(unsigned int blockId, unsigned int timestampHigh,
                                  unsigned int timestampLow) override {
        return image_->UpdateImageInfoA(blockId, timestampHigh, timestampLow);
    }
    unsigned int UpdateImageInfoB(unsigned int statusA, unsigned int lostPackets,
                                  unsigned int statusC) override {
        return image_->UpdateImageInfoB(statusA, lostPackets, statusC);
    }
    unsigned int UpdateImageInfoC(unsigned int width, unsigned int height, unsigned int format) override {
        return image_->UpdateImageInfoC(width, height, format);
    }

private:
    std::unique_ptr<IImage> image_;
    std::shared_ptr<IImagePool> pool_;
};

} // namespace VX3
