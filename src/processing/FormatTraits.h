// A row of the format table as the algorithms read it.
#pragma once

#include "processing/SampleLayout.h"
#include "processing/kernels/Demosaic.h"
#include "processing/kernels/Unpack.h"

namespace VX3 {

struct Coding {
    enum class Kind { None, Plain, Packed, Float, Mosaic };

    Kind kind = Kind::None;
    Kernels::Packing packing = {};
    Kernels::Mosaic mosaic = {};
};

// By the names of the format table.
namespace Codings {
constexpr Coding Plain{Coding::Kind::Plain};
constexpr Coding Packed10{Coding::Kind::Packed, Kernels::Packing::Mono10Packed};
constexpr Coding Packed12{Coding::Kind::Packed, Kernels::Packing::Mono12Packed};
constexpr Coding Stream10{Coding::Kind::Packed, Kernels::Packing::Mono10p};
constexpr Coding Stream12{Coding::Kind::Packed, Kernels::Packing::Mono12p};
constexpr Coding Float{Coding::Kind::Float};
constexpr Coding MosaicRG{Coding::Kind::Mosaic, {}, Kernels::Mosaic::RG};
constexpr Coding MosaicGR{Coding::Kind::Mosaic, {}, Kernels::Mosaic::GR};
constexpr Coding MosaicBG{Coding::Kind::Mosaic, {}, Kernels::Mosaic::BG};
constexpr Coding MosaicGB{Coding::Kind::Mosaic, {}, Kernels::Mosaic::GB};
} // namespace Codings

struct FormatTraits {
    PixelFormatValue format = InvalidFormat;
    SampleLayout layout;
    Coding coding;
    PixelFormatValue unpacked = InvalidFormat; // invalid where there is nothing to unpack or reduce
    PixelFormatValue reduced = InvalidFormat;
};

// Every code outside the table has the same row, that of the invalid format.
const FormatTraits& TraitsOf(PixelFormatValue format);

} // namespace VX3
