#include "vx3/image/IFormatConvertor.h"

namespace VX3 {

namespace {

class FormatOnlyConvertor : public IFormatConvertor {
public:
    explicit FormatOnlyConvertor(PixelFormat format) : format_(format) {}
    PixelFormat Format() const override { return format_; }
    std::unique_ptr<IImage> Unpack(const IImage*, unsigned int, std::shared_ptr<IImagePool>) const override {
        return nullptr;
    }
    std::unique_ptr<IImage> Unpack2Image8(const IImage*, unsigned int,
                                          std::shared_ptr<IImagePool>) const override {
        return nullptr;
    }
    std::vector<std::pair<PixelChannelID, std::unique_ptr<IImage>>>
    Split(const IImage*, unsigned int, std::shared_ptr<IImagePool>) const override {
        return {};
    }
    std::vector<std::pair<PixelChannelID, HistogramData>> CreateHistogram(const IImage*, const ROIRect*,
                                                                          unsigned int) const override {
        return {};
    }
    std::vector<std::pair<PixelChannelID, ProfileData>> CreateProfile(const IImage*, ProfileType, unsigned int,
                                                                      unsigned int) const override {
        return {};
    }

private:
    PixelFormat format_;
};

} // namespace

std::unique_ptr<IFormatConvertor> FormatConvertorCreator::Create(PixelFormat format) {
    return std::make_unique<FormatOnlyConvertor>(format.Channels() != 0 ? format : PixelFormat(InvalidFormat));
}

} // namespace VX3
