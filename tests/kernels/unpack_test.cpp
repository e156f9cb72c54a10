#include "processing/kernels/Unpack.h"

#include "support/KernelLab.h"

#include <array>

using namespace VX3;
using namespace VX3::Kernels;

namespace {

constexpr std::array Packings = {Packing::Mono10p, Packing::Mono12p, Packing::Mono10Packed,
                                 Packing::Mono12Packed};

std::vector<std::uint16_t> Unpacked(Packing packing, const std::vector<std::uint8_t>& bytes,
                                    std::size_t pixels) {
    std::vector<std::uint16_t> samples(pixels);
    UnpackLine(packing, bytes.data(), bytes.size(), reinterpret_cast<std::uint8_t*>(samples.data()), pixels);
    return samples;
}

using Samples = std::vector<std::uint16_t>;

TEST(Unpack, PutsBitsWhereTheFormatsSay) {
    EXPECT_EQ(Unpacked(Packing::Mono10p, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, 4), Samples(4, 1023));
    EXPECT_EQ(Unpacked(Packing::Mono10p, {0x01, 0, 0, 0, 0}, 4), (Samples{1, 0, 0, 0}));
    EXPECT_EQ(Unpacked(Packing::Mono10p, {0x34, 0x56, 0x78, 0x9A, 0xBC}, 4),
              (Samples{0x234, 0x215, 0x1A7, 0x2F2}));
    EXPECT_EQ(Unpacked(Packing::Mono12p, {0xAB, 0xCD, 0xEF}, 2), (Samples{0xDAB, 0xEFC}));
    EXPECT_EQ(Unpacked(Packing::Mono12Packed, {0xAB, 0xCD, 0xEF}, 2), (Samples{0xABD, 0xEFC}));
    // Low bits of the first sample in bits 0-1 of the middle byte, of the second in bits 4-5.
    EXPECT_EQ(Unpacked(Packing::Mono10Packed, {0xAB, 0xCD, 0xEF}, 2), (Samples{0x2AD, 0x3BC}));
}

TEST(Unpack, ReadsMissingBitsOfAnOddLineAsZero) {
    // 7 samples of 10 bits in 8 bytes: the last sample loses its top 6 bits.
    EXPECT_EQ(Unpacked(Packing::Mono10p, std::vector<std::uint8_t>(8, 0xFF), 7),
              (Samples{1023, 1023, 1023, 1023, 1023, 1023, 15}));
    EXPECT_EQ(Unpacked(Packing::Mono12p, {0xFF}, 1), Samples{0xFF});
    EXPECT_EQ(Unpacked(Packing::Mono12Packed, {0xFF}, 1), Samples{0xFF0});
    EXPECT_EQ(Unpacked(Packing::Mono12Packed, {}, 3), Samples(3, 0));
}

TEST(Unpack, EveryTargetAgreesWithTheReferenceAndStaysInItsLine) {
    VX3::Testing::ForEachTarget([] {
        for (const Packing packing : Packings) {
            for (const std::size_t pixels : VX3::Testing::AwkwardWidths()) {
                const std::size_t bytes = packing == Packing::Mono10p ? pixels * 5 / 4 : pixels * 3 / 2;
                for (const std::size_t held : {bytes, bytes + 3, bytes / 2}) {
                    const auto lines = [=](auto kernel) {
                        return [=](auto* source, auto* targets) {
                            kernel(packing, source, held, targets[0], pixels);
                        };
                    };
                    VX3::Testing::ExpectLikeReference({held, 2 * pixels}, lines(UnpackLine),
                                                      lines(Reference::UnpackLine));
                    VX3::Testing::ExpectLikeReference({held, pixels}, lines(UnpackLineTo8),
                                                      lines(Reference::UnpackLineTo8));
                }
            }
        }
    });
}

TEST(Unpack, TopEightBitsAreThoseOfTheUnpackedSample) {
    std::vector<std::uint8_t> bytes(150);
    VX3::Testing::FillRandom(bytes.data(), bytes.size(), 7);
    for (const Packing packing : Packings) {
        const bool ten = packing == Packing::Mono10p || packing == Packing::Mono10Packed;
        std::vector<std::uint8_t> reduced(100);
        UnpackLineTo8(packing, bytes.data(), bytes.size(), reduced.data(), reduced.size());
        const Samples samples = Unpacked(packing, bytes, reduced.size());
        for (std::size_t x = 0; x < reduced.size(); ++x)
            ASSERT_EQ(reduced[x], samples[x] >> (ten ? 2 : 4)) << x;
    }
}

} // namespace
