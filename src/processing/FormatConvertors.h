// One converter a pixel format. The classes differ only in their format's traits; an image owns one of them.
#pragma once

#include "processing/FormatConvertorAbs.h"

namespace VX3 {

// What all formats of the table share: each operation is chosen by the traits.
class TraitsConvertor : public FormatConvertorAbs {
public:
    PixelFormat Format() const override { return Traits().format; }
    std::unique_ptr<IImage> Unpack(const IImage* image, unsigned int unused,
                                   std::shared_ptr<IImagePool> pool) const override;
    std::unique_ptr<IImage> Unpack2Image8(const IImage* image, unsigned int bits,
                                          std::shared_ptr<IImagePool> pool) const override;
    Images Split(const IImage* image, unsigned int unused, std::shared_ptr<IImagePool> pool) const override;
    Histograms CreateHistogram(const IImage* image, const ROIRect* roi, unsigned int unused) const override;
    Profiles CreateProfile(const IImage* image, ProfileType type, unsigned int index,
                           unsigned int flags) const override;

protected:
    virtual const FormatTraits& Traits() const = 0;
};

template <PixelFormatValue Value>
class FormatConvertor : public TraitsConvertor {
protected:
    const FormatTraits& Traits() const final { return kTraits; }

private:
    static constexpr FormatTraits kTraits = TraitsOf(Value);
    static_assert(Value == InvalidFormat || kTraits.kind != FormatKind::None, "not in the format table");
};

class Mono8Convertor final : public FormatConvertor<Mono8> {};
class Mono10Convertor final : public FormatConvertor<Mono10> {};
class Mono12Convertor final : public FormatConvertor<Mono12> {};
class Mono14Convertor final : public FormatConvertor<Mono14> {};
class Mono16Convertor final : public FormatConvertor<Mono16> {};
class Mono10PackedConvertor final : public FormatConvertor<Mono10Packed> {};
class Mono12PackedConvertor final : public FormatConvertor<Mono12Packed> {};
class Mono10PConvertor final : public FormatConvertor<Mono10p> {};
class Mono12PConvertor final : public FormatConvertor<Mono12p> {};
class Mono32FConvertor final : public FormatConvertor<Mono32f> {};
class BayerRG8Convertor final : public FormatConvertor<BayerRG8> {};
class BayerGR8Convertor final : public FormatConvertor<BayerGR8> {};
class BayerBG8Convertor final : public FormatConvertor<BayerBG8> {};
class BayerGB8Convertor final : public FormatConvertor<BayerGB8> {};
class BayerRG10Convertor final : public FormatConvertor<BayerRG10> {};
class BayerGR10Convertor final : public FormatConvertor<BayerGR10> {};
class BayerBG10Convertor final : public FormatConvertor<BayerBG10> {};
class BayerGB10Convertor final : public FormatConvertor<BayerGB10> {};
class BayerRG12Convertor final : public FormatConvertor<BayerRG12> {};
class BayerGR12Convertor final : public FormatConvertor<BayerGR12> {};
class BayerBG12Convertor final : public FormatConvertor<BayerBG12> {};
class BayerGB12Convertor final : public FormatConvertor<BayerGB12> {};
class RGB8Convertor final : public FormatConvertor<RGB8> {};
class BGR8Convertor final : public FormatConvertor<BGR8> {};
class RGBa8Convertor final : public FormatConvertor<RGBa8> {};
class BGRa8Convertor final : public FormatConvertor<BGRa8> {};
class RGB10Convertor final : public FormatConvertor<RGB10> {};
class BGR10Convertor final : public FormatConvertor<BGR10> {};
class RGB12Convertor final : public FormatConvertor<RGB12> {};
class BGR12Convertor final : public FormatConvertor<BGR12> {};
class RGB14Convertor final : public FormatConvertor<RGB14> {};
class BGR14Convertor final : public FormatConvertor<BGR14> {};
class RGB16Convertor final : public FormatConvertor<RGB16> {};
class BGR16Convertor final : public FormatConvertor<BGR16> {};
class RGBa10Convertor final : public FormatConvertor<RGBa10> {};
class BGRa10Convertor final : public FormatConvertor<BGRa10> {};
class RGBa12Convertor final : public FormatConvertor<RGBa12> {};
class BGRa12Convertor final : public FormatConvertor<BGRa12> {};
class RGBa14Convertor final : public FormatConvertor<RGBa14> {};
class BGRa14Convertor final : public FormatConvertor<BGRa14> {};
class RGBa16Convertor final : public FormatConvertor<RGBa16> {};
class BGRa16Convertor final : public FormatConvertor<BGRa16> {};
// Every code outside the format table; all its results are empty.
class InvalidFormatConvertor final : public FormatConvertor<InvalidFormat> {};

} // namespace VX3
