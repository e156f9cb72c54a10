#include "processing/FormatConvertors.h"

#include "processing/ImageConversion.h"

namespace VX3 {

std::unique_ptr<IImage> TableConvertor::Unpack(const IImage* image, unsigned int,
                                               std::shared_ptr<IImagePool> pool) const {
    return UnpackImage(image, traits_, std::move(pool));
}

std::unique_ptr<IImage> TableConvertor::Unpack2Image8(const IImage* image, unsigned int,
                                                      std::shared_ptr<IImagePool> pool) const {
    return ReduceImage(image, traits_, std::move(pool));
}

TableConvertor::Images TableConvertor::Split(const IImage* image, unsigned int,
                                             std::shared_ptr<IImagePool> pool) const {
    return SplitKernel{traits_.layout}(image, std::move(pool));
}

TableConvertor::Histograms TableConvertor::CreateHistogram(const IImage* image, const ROIRect* roi,
                                                           unsigned int) const {
    return HistogramKernel{traits_.layout}(image, roi);
}

TableConvertor::Profiles TableConvertor::CreateProfile(const IImage* image, ProfileType type,
                                                       unsigned int index, unsigned int flags) const {
    return (flags & 1U) != 0 ? MeanProfileKernel{traits_.layout}(image, type)
                             : ProfileKernel{traits_.layout}(image, type, index);
}

std::unique_ptr<IFormatConvertor> FormatConvertorCreator::Create(PixelFormat format) {
    switch (format.GetFormat()) {
#define VX3_FORMAT_CASE(convertor, name, ...)                                                                \
    case name:                                                                                               \
        return std::make_unique<convertor>();
        VX3_FORMAT_TABLE(VX3_FORMAT_CASE)
#undef VX3_FORMAT_CASE
    default:
        return std::make_unique<InvalidFormatConvertor>();
    }
}

} // namespace VX3
