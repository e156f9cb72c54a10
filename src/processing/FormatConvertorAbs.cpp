#include "processing/FormatConvertorAbs.h"

#include "processing/ImageHistogram.h"
#include "processing/ImageProfile.h"
#include "processing/ImageSplit.h"

namespace VX3 {

FormatConvertorAbs::Profiles FormatConvertorAbs::CreateProfile(const IImage*, ProfileType, unsigned int,
                                                               unsigned int) const {
    return {};
}

// Each kernel is one layout of the shared algorithm.
#define VX3_SPLIT_KERNEL(name, ...)                                                                          \
    FormatConvertorAbs::Images FormatConvertorAbs::name(const IImage* image,                                 \
                                                        std::shared_ptr<IImagePool> pool) const {            \
        return SplitImage(image, SampleLayout{__VA_ARGS__}, std::move(pool));                                \
    }
VX3_SPLIT_KERNEL(Split8C3, 1, 3)
VX3_SPLIT_KERNEL(Split8C4, 1, 4)
VX3_SPLIT_KERNEL(Split16C3, 2, 3)
VX3_SPLIT_KERNEL(Split16C4, 2, 4)
VX3_SPLIT_KERNEL(Split8Bayer, 1, 1, true)
VX3_SPLIT_KERNEL(Split16Bayer, 2, 1, true)
#undef VX3_SPLIT_KERNEL

#define VX3_HISTOGRAM_KERNEL(name, ...)                                                                      \
    FormatConvertorAbs::Histograms FormatConvertorAbs::name(const IImage* image, const ROIRect* roi) const { \
        return CountImage(image, SampleLayout{__VA_ARGS__}, roi);                                            \
    }
VX3_HISTOGRAM_KERNEL(CreateHistogram8C1, 1, 1)
VX3_HISTOGRAM_KERNEL(CreateHistogram8C3, 1, 3)
VX3_HISTOGRAM_KERNEL(CreateHistogram8C4, 1, 4)
VX3_HISTOGRAM_KERNEL(CreateHistogram16C1, 2, 1)
VX3_HISTOGRAM_KERNEL(CreateHistogram16C3, 2, 3)
VX3_HISTOGRAM_KERNEL(CreateHistogram16C4, 2, 4)
VX3_HISTOGRAM_KERNEL(CreateHistogram8Bayer, 1, 1, true)
VX3_HISTOGRAM_KERNEL(CreateHistogram16Bayer, 2, 1, true)
#undef VX3_HISTOGRAM_KERNEL

#define VX3_PROFILE_KERNELS(name, ...)                                                                       \
    FormatConvertorAbs::Profiles FormatConvertorAbs::name(const IImage* image, ProfileType type,             \
                                                          unsigned int index) const {                        \
        return ProfileOf(image, SampleLayout{__VA_ARGS__}, type, index);                                     \
    }                                                                                                        \
    FormatConvertorAbs::Profiles FormatConvertorAbs::name##Mean(const IImage* image, ProfileType type)       \
        const {                                                                                              \
        return MeanProfileOf(image, SampleLayout{__VA_ARGS__}, type);                                        \
    }
VX3_PROFILE_KERNELS(CreateProfile8C1, 1, 1)
VX3_PROFILE_KERNELS(CreateProfile8C3, 1, 3)
VX3_PROFILE_KERNELS(CreateProfile8C4, 1, 4)
VX3_PROFILE_KERNELS(CreateProfile16C1, 2, 1)
VX3_PROFILE_KERNELS(CreateProfile16C3, 2, 3)
VX3_PROFILE_KERNELS(CreateProfile16C4, 2, 4)
#undef VX3_PROFILE_KERNELS

} // namespace VX3
