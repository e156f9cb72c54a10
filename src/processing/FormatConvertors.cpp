#include "processing/FormatConvertors.h"

#include "processing/ImageConversion.h"
#include "processing/SampleLayout.h"

namespace VX3 {

namespace {

// Kernels of the base by layout: 8C1, 8C3, 8C4, 16C1, 16C3, 16C4, 8Bayer, 16Bayer.
enum class Kernel { None, C1x8, C3x8, C4x8, C1x16, C3x16, C4x16, Bayer8, Bayer16 };

Kernel KernelOf(const FormatTraits& traits) {
    const bool narrow = traits.sampleBytes == 1;
    if (traits.kind == FormatKind::Bayer) {
        return narrow ? Kernel::Bayer8 : Kernel::Bayer16;
    }
    if (traits.kind == FormatKind::Mono) {
        return narrow ? Kernel::C1x8 : Kernel::C1x16;
    }
    if (traits.kind != FormatKind::Colour) {
        return Kernel::None;
    }
    if (traits.channels == 3) {
        return narrow ? Kernel::C3x8 : Kernel::C3x16;
    }
    return narrow ? Kernel::C4x8 : Kernel::C4x16;
}

} // namespace

std::unique_ptr<IImage> TraitsConvertor::Unpack(const IImage* image, unsigned int,
                                                std::shared_ptr<IImagePool> pool) const {
    return UnpackImage(image, Traits(), std::move(pool));
}

std::unique_ptr<IImage> TraitsConvertor::Unpack2Image8(const IImage* image, unsigned int,
                                                       std::shared_ptr<IImagePool> pool) const {
    return ReduceImage(image, Traits(), std::move(pool));
}

TraitsConvertor::Images TraitsConvertor::Split(const IImage* image, unsigned int,
                                               std::shared_ptr<IImagePool> pool) const {
    switch (KernelOf(Traits())) {
    case Kernel::C3x8:
        return Split8C3(image, std::move(pool));
    case Kernel::C4x8:
        return Split8C4(image, std::move(pool));
    case Kernel::C3x16:
        return Split16C3(image, std::move(pool));
    case Kernel::C4x16:
        return Split16C4(image, std::move(pool));
    case Kernel::Bayer8:
        return Split8Bayer(image, std::move(pool));
    case Kernel::Bayer16:
        return Split16Bayer(image, std::move(pool));
    default:
        return {};
    }
}

TraitsConvertor::Histograms TraitsConvertor::CreateHistogram(const IImage* image, const ROIRect* roi,
                                                             unsigned int) const {
    switch (KernelOf(Traits())) {
    case Kernel::C1x8:
        return CreateHistogram8C1(image, roi);
    case Kernel::C3x8:
        return CreateHistogram8C3(image, roi);
    case Kernel::C4x8:
        return CreateHistogram8C4(image, roi);
    case Kernel::C1x16:
        return CreateHistogram16C1(image, roi);
    case Kernel::C3x16:
        return CreateHistogram16C3(image, roi);
    case Kernel::C4x16:
        return CreateHistogram16C4(image, roi);
    case Kernel::Bayer8:
        return CreateHistogram8Bayer(image, roi);
    case Kernel::Bayer16:
        return CreateHistogram16Bayer(image, roi);
    default:
        return {};
    }
}

TraitsConvertor::Profiles TraitsConvertor::CreateProfile(const IImage* image, ProfileType type,
                                                         unsigned int index, unsigned int flags) const {
    const bool mean = (flags & 1U) != 0;
    switch (KernelOf(Traits())) {
    case Kernel::C1x8:
        return mean ? CreateProfile8C1Mean(image, type) : CreateProfile8C1(image, type, index);
    case Kernel::C3x8:
        return mean ? CreateProfile8C3Mean(image, type) : CreateProfile8C3(image, type, index);
    case Kernel::C4x8:
        return mean ? CreateProfile8C4Mean(image, type) : CreateProfile8C4(image, type, index);
    case Kernel::C1x16:
        return mean ? CreateProfile16C1Mean(image, type) : CreateProfile16C1(image, type, index);
    case Kernel::C3x16:
        return mean ? CreateProfile16C3Mean(image, type) : CreateProfile16C3(image, type, index);
    case Kernel::C4x16:
        return mean ? CreateProfile16C4Mean(image, type) : CreateProfile16C4(image, type, index);
    default:
        return FormatConvertorAbs::CreateProfile(image, type, index, flags);
    }
}

} // namespace VX3
