#include "processing/FormatTraits.h"

#include "processing/FormatTable.h"

namespace VX3 {

const FormatTraits& TraitsOf(PixelFormatValue format) {
    static constexpr FormatTraits Unknown;
    switch (format) {
#define VX3_FORMAT_ROW(convertor, name, layout, coding, unpacked, reduced)                                   \
    case name: {                                                                                             \
        static constexpr FormatTraits Row{name, Layouts::layout, Codings::coding, unpacked, reduced};        \
        return Row;                                                                                          \
    }
        VX3_FORMAT_TABLE(VX3_FORMAT_ROW)
#undef VX3_FORMAT_ROW
    default:
        return Unknown;
    }
}

} // namespace VX3
