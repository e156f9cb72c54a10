#include "processing/FormatConvertors.h"

namespace VX3 {

std::unique_ptr<IFormatConvertor> FormatConvertorCreator::Create(PixelFormat format) {
    switch (format.GetFormat()) {
    case Mono8:
        return std::make_unique<Mono8Convertor>();
    case Mono10:
        return std::make_unique<Mono10Convertor>();
    case Mono12:
        return std::make_unique<Mono12Convertor>();
    case Mono14:
        return std::make_unique<Mono14Convertor>();
    case Mono16:
        return std::make_unique<Mono16Convertor>();
    case Mono10Packed:
        return std::make_unique<Mono10PackedConvertor>();
    case Mono12Packed:
        return std::make_unique<Mono12PackedConvertor>();
    case Mono10p:
        return std::make_unique<Mono10PConvertor>();
    case Mono12p:
        return std::make_unique<Mono12PConvertor>();
    case Mono32f:
        return std::make_unique<Mono32FConvertor>();
    case BayerRG8:
        return std::make_unique<BayerRG8Convertor>();
    case BayerGR8:
        return std::make_unique<BayerGR8Convertor>();
    case BayerBG8:
        return std::make_unique<BayerBG8Convertor>();
    case BayerGB8:
        return std::make_unique<BayerGB8Convertor>();
    case BayerRG10:
        return std::make_unique<BayerRG10Convertor>();
    case BayerGR10:
        return std::make_unique<BayerGR10Convertor>();
    case BayerBG10:
        return std::make_unique<BayerBG10Convertor>();
    case BayerGB10:
        return std::make_unique<BayerGB10Convertor>();
    case BayerRG12:
        return std::make_unique<BayerRG12Convertor>();
    case BayerGR12:
        return std::make_unique<BayerGR12Convertor>();
    case BayerBG12:
        return std::make_unique<BayerBG12Convertor>();
    case BayerGB12:
        return std::make_unique<BayerGB12Convertor>();
    case RGB8:
        return std::make_unique<RGB8Convertor>();
    case BGR8:
        return std::make_unique<BGR8Convertor>();
    case RGBa8:
        return std::make_unique<RGBa8Convertor>();
    case BGRa8:
        return std::make_unique<BGRa8Convertor>();
    case RGB10:
        return std::make_unique<RGB10Convertor>();
    case BGR10:
        return std::make_unique<BGR10Convertor>();
    case RGB12:
        return std::make_unique<RGB12Convertor>();
    case BGR12:
        return std::make_unique<BGR12Convertor>();
    case RGB14:
        return std::make_unique<RGB14Convertor>();
    case BGR14:
        return std::make_unique<BGR14Convertor>();
    case RGB16:
        return std::make_unique<RGB16Convertor>();
    case BGR16:
        return std::make_unique<BGR16Convertor>();
    case RGBa10:
        return std::make_unique<RGBa10Convertor>();
    case BGRa10:
        return std::make_unique<BGRa10Convertor>();
    case RGBa12:
        return std::make_unique<RGBa12Convertor>();
    case BGRa12:
        return std::make_unique<BGRa12Convertor>();
    case RGBa14:
        return std::make_unique<RGBa14Convertor>();
    case BGRa14:
        return std::make_unique<BGRa14Convertor>();
    case RGBa16:
        return std::make_unique<RGBa16Convertor>();
    case BGRa16:
        return std::make_unique<BGRa16Convertor>();
    default:
        return std::make_unique<InvalidFormatConvertor>();
    }
}

} // namespace VX3
