// What each pixel format is made into, a row a format; the converters and their names come from these rows,
// depths and channels from the table of pixel formats. Another format is another row.
#pragma once

// X(converter, format, layout, coding, unpacked, reduced)
//   layout    which kernels split, count and profile it (channels x bits); None: they cannot
//   coding    how its samples are read: plain, packed in two ways, floating-point, or a mosaic of colours
//   unpacked  the format with 16 bits a sample, reduced the one with 8; invalid where there is none
#define VX3_FORMAT_TABLE(X)                                                                                  \
    X(Mono8Convertor, Mono8, C1x8, Plain, InvalidFormat, InvalidFormat)                                      \
    X(Mono10Convertor, Mono10, C1x16, Plain, InvalidFormat, Mono8)                                           \
    X(Mono12Convertor, Mono12, C1x16, Plain, InvalidFormat, Mono8)                                           \
    X(Mono14Convertor, Mono14, C1x16, Plain, InvalidFormat, Mono8)                                           \
    X(Mono16Convertor, Mono16, C1x16, Plain, InvalidFormat, Mono8)                                           \
    X(Mono10PackedConvertor, Mono10Packed, None, Packed10, Mono10, Mono8)                                    \
    X(Mono12PackedConvertor, Mono12Packed, None, Packed12, Mono12, Mono8)                                    \
    X(Mono10PConvertor, Mono10p, None, Stream10, Mono10, Mono8)                                              \
    X(Mono12PConvertor, Mono12p, None, Stream12, Mono12, Mono8)                                              \
    X(Mono32FConvertor, Mono32f, None, Float, Mono16, Mono8)                                                 \
    X(BayerRG8Convertor, BayerRG8, Bayer8, MosaicRG, InvalidFormat, RGB8)                                    \
    X(BayerGR8Convertor, BayerGR8, Bayer8, MosaicGR, InvalidFormat, RGB8)                                    \
    X(BayerBG8Convertor, BayerBG8, Bayer8, MosaicBG, InvalidFormat, RGB8)                                    \
    X(BayerGB8Convertor, BayerGB8, Bayer8, MosaicGB, InvalidFormat, RGB8)                                    \
    X(BayerRG10Convertor, BayerRG10, Bayer16, MosaicRG, InvalidFormat, RGB8)                                 \
    X(BayerGR10Convertor, BayerGR10, Bayer16, MosaicGR, InvalidFormat, RGB8)                                 \
    X(BayerBG10Convertor, BayerBG10, Bayer16, MosaicBG, InvalidFormat, RGB8)                                 \
    X(BayerGB10Convertor, BayerGB10, Bayer16, MosaicGB, InvalidFormat, RGB8)                                 \
    X(BayerRG12Convertor, BayerRG12, Bayer16, MosaicRG, InvalidFormat, RGB8)                                 \
    X(BayerGR12Convertor, BayerGR12, Bayer16, MosaicGR, InvalidFormat, RGB8)                                 \
    X(BayerBG12Convertor, BayerBG12, Bayer16, MosaicBG, InvalidFormat, RGB8)                                 \
    X(BayerGB12Convertor, BayerGB12, Bayer16, MosaicGB, InvalidFormat, RGB8)                                 \
    X(RGB8Convertor, RGB8, C3x8, Plain, InvalidFormat, BGR8)                                                 \
    X(BGR8Convertor, BGR8, C3x8, Plain, InvalidFormat, RGB8)                                                 \
    X(RGBa8Convertor, RGBa8, C4x8, Plain, InvalidFormat, BGRa8)                                              \
    X(BGRa8Convertor, BGRa8, C4x8, Plain, InvalidFormat, RGBa8)                                              \
    X(RGB10Convertor, RGB10, C3x16, Plain, InvalidFormat, RGB8)                                              \
    X(BGR10Convertor, BGR10, C3x16, Plain, InvalidFormat, BGR8)                                              \
    X(RGB12Convertor, RGB12, C3x16, Plain, InvalidFormat, RGB8)                                              \
    X(BGR12Convertor, BGR12, C3x16, Plain, InvalidFormat, BGR8)                                              \
    X(RGB14Convertor, RGB14, C3x16, Plain, InvalidFormat, RGB8)                                              \
    X(BGR14Convertor, BGR14, C3x16, Plain, InvalidFormat, BGR8)                                              \
    X(RGB16Convertor, RGB16, C3x16, Plain, InvalidFormat, RGB8)                                              \
    X(BGR16Convertor, BGR16, C3x16, Plain, InvalidFormat, BGR8)                                              \
    X(RGBa10Convertor, RGBa10, C4x16, Plain, InvalidFormat, RGBa8)                                           \
    X(BGRa10Convertor, BGRa10, C4x16, Plain, InvalidFormat, RGBa8)                                           \
    X(RGBa12Convertor, RGBa12, C4x16, Plain, InvalidFormat, RGBa8)                                           \
    X(BGRa12Convertor, BGRa12, C4x16, Plain, InvalidFormat, RGBa8)                                           \
    X(RGBa14Convertor, RGBa14, C4x16, Plain, InvalidFormat, RGBa8)                                           \
    X(BGRa14Convertor, BGRa14, C4x16, Plain, InvalidFormat, RGBa8)                                           \
    X(RGBa16Convertor, RGBa16, C4x16, Plain, InvalidFormat, RGBa8)                                           \
    X(BGRa16Convertor, BGRa16, C4x16, Plain, InvalidFormat, RGBa8)
