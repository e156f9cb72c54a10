// One converter a row of the format table, under the table's names.
#pragma once

#include "processing/FormatConvertorAbs.h"
#include "processing/FormatTable.h"
#include "processing/FormatTraits.h"

namespace VX3 {

// What a row says, done. An image owns one.
class TableConvertor : public FormatConvertorAbs {
public:
    explicit TableConvertor(PixelFormatValue format) : traits_(TraitsOf(format)) {}

    PixelFormat Format() const override { return traits_.format; }
    std::unique_ptr<IImage> Unpack(const IImage* image, unsigned int unused,
                                   std::shared_ptr<IImagePool> pool) const override;
    std::unique_ptr<IImage> Unpack2Image8(const IImage* image, unsigned int bits,
                                          std::shared_ptr<IImagePool> pool) const override;
    Images Split(const IImage* image, unsigned int unused, std::shared_ptr<IImagePool> pool) const override;
    Histograms CreateHistogram(const IImage* image, const ROIRect* roi, unsigned int unused) const override;
    Profiles CreateProfile(const IImage* image, ProfileType type, unsigned int index,
                           unsigned int flags) const override;

private:
    const FormatTraits& traits_;
};

template <PixelFormatValue Value>
class FormatConvertor final : public TableConvertor {
public:
    FormatConvertor() : TableConvertor(Value) {}
};

#define VX3_FORMAT_CONVERTOR(convertor, format, ...) using convertor = FormatConvertor<format>;
VX3_FORMAT_TABLE(VX3_FORMAT_CONVERTOR)
#undef VX3_FORMAT_CONVERTOR
// Every code outside the table; all its results are empty.
using InvalidFormatConvertor = FormatConvertor<InvalidFormat>;

} // namespace VX3
