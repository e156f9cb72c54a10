#include "processing/kernels/Histogram.h"
#include "processing/kernels/Map.h"
#include "processing/kernels/Profile.h"
#include "processing/kernels/Samples.h"

#include "support/KernelLab.h"

#include <cstring>
#include <memory>

using namespace VX3;
using namespace VX3::Kernels;
using VX3::Testing::AwkwardWidths;
using VX3::Testing::ExpectLikeReference;
using VX3::Testing::ExpectSameLine;
using VX3::Testing::ForEachTarget;

namespace {

// Four arrays a channel, exactly as long as the bins, so that a count beyond them is caught by the guard.
struct CounterLab {
    CounterLab(unsigned int channels, std::uint32_t bins) {
        counters.bins = bins;
        for (unsigned int i = 0; i < channels * Counters::Ways; ++i) {
            buffers.push_back(
                std::make_unique<VX3::Testing::GuardedBuffer>(4 * bins, VX3::Testing::Guard::Behind));
            counters.counts[i] = reinterpret_cast<std::uint32_t*>(buffers.back()->Data());
        }
    }
    std::vector<std::uint32_t> Of(unsigned int channel) const {
        const std::uint32_t* counts = counters.counts[Counters::Ways * channel];
        return {counts, counts + counters.bins};
    }
    std::vector<std::unique_ptr<VX3::Testing::GuardedBuffer>> buffers;
    Counters counters{};
};

template <class Count, class Reference>
void ExpectSameCounts(unsigned int channels, std::uint32_t bins, std::size_t width, unsigned int sampleBytes,
                      bool outside, Count count, Reference reference) {
    VX3::Testing::GuardedBuffer source(width * channels * sampleBytes, VX3::Testing::Guard::Behind);
    VX3::Testing::FillRandom(source.Data(), source.Size(), static_cast<unsigned int>(width));
    if (sampleBytes == 2 && !outside) {
        for (std::size_t i = 0; i < width * channels; ++i) {
            PutSample(source.Data(), i,
                      static_cast<std::uint16_t>(Sample<std::uint16_t>(source.Data(), i) % bins));
        }
    }
    CounterLab lab(channels, bins);
    CounterLab expected(channels, bins);
    count(source.Data(), width, channels, lab.counters);
    SumCounters(channels, lab.counters);
    reference(source.Data(), width, channels, expected.counters);
    for (unsigned int channel = 0; channel < channels; ++channel)
        ASSERT_EQ(lab.Of(channel), expected.Of(channel)) << channels << " channels, width " << width;
}

TEST(Histogram, EveryTargetAgreesWithTheReference) {
    ForEachTarget([] {
        for (unsigned int channels = 1; channels <= 4; ++channels) {
            for (const std::size_t width : AwkwardWidths())
                ExpectSameCounts(channels, 256, width, 1, true, CountLine8, Kernels::Reference::CountLine8);
            // Samples above the nominal range are not counted, wherever in a block they stand.
            for (const std::size_t width : {1U, 63U, 64U, 65U, 192U, 200U, 1000U}) {
                for (const bool outside : {false, true})
                    ExpectSameCounts(channels, 1024, width, 2, outside, CountLine16,
                                     Kernels::Reference::CountLine16);
                ExpectSameCounts(channels, 65536, width, 2, true, CountLine16,
                                 Kernels::Reference::CountLine16);
            }
        }
    });
}

TEST(Profile, SumsAgreeWithTheReferenceAndDoNotOverflow) {
    ForEachTarget([] {
        for (const unsigned int bytes : {1U, 2U}) {
            for (const std::size_t width : AwkwardWidths()) {
                const std::size_t lines = width < 200 ? 600 : 7;
                // The brightest samples find lanes that are too narrow.
                const auto fill = [&](std::uint8_t* source) {
                    std::memset(source, 0xFF, width * bytes * lines / 2);
                };
                if (width % 7 != 3 && width > 20)
                    continue; // every seventh width is enough for what is slow here
                const auto columns = [=](auto kernel) {
                    return [=](auto* source, auto* targets) {
                        std::vector<std::uint64_t> sums(width + 1, 5);
                        kernel(source, width * bytes, lines, width, bytes, sums.data());
                        if (width != 0) // an empty line has no memory
                            std::memcpy(targets[0], sums.data(), 8 * width);
                    };
                };
                ExpectLikeReference({width * bytes * lines, 8 * width, 1, fill}, columns(SumColumns),
                                    columns(Reference::SumColumns));
                for (unsigned int channels = 1; channels <= 4; ++channels) {
                    std::uint64_t sums[4] = {};
                    std::uint64_t expected[4] = {};
                    VX3::Testing::GuardedBuffer line(width * channels * bytes, VX3::Testing::Guard::Behind);
                    std::memset(line.Data(), 0xFE, line.Size());
                    SumLine(line.Data(), width, channels, bytes, sums);
                    Reference::SumLine(line.Data(), width, channels, bytes, expected);
                    ASSERT_TRUE(std::equal(sums, sums + 4, expected)) << width << " x " << channels;
                }
            }
        }
    });
    // More lines than 32-bit lanes hold of the brightest 16-bit sample, by a stride of 0.
    std::uint8_t brightest[2] = {0xFF, 0xFF};
    std::uint64_t sum = 0;
    SumColumns(brightest, 0, 200000, 1, 2, &sum);
    EXPECT_EQ(sum, 200000ULL * 65535);
}

TEST(Map, EveryTargetAgreesWithTheReference) {
    std::vector<std::uint32_t> table(16384);
    VX3::Testing::FillRandom(reinterpret_cast<std::uint8_t*>(table.data()), 4 * table.size(), 3);
    std::uint32_t table8[256];
    std::copy(table.begin(), table.begin() + 256, table8);
    const MapWindow windows[] = {{0, 65535, 2, table.data(), 16383},
                                 {1000, 65535, 2, table.data(), 16383},
                                 {100, 356, 0, table.data(), 255},
                                 {65535, 65535, 0, table.data(), 255},
                                 {40000, 50000, 0, table.data(), 16383}};
    ForEachTarget([&] {
        for (const std::size_t width : AwkwardWidths()) {
            for (const MapWindow& window : windows)
                ExpectSameLine({2 * width, 4 * width}, MapLine16, Reference::MapLine16, width, window);
            const auto mapped = [&](auto kernel) { // an array cannot be copied along
                return
                    [&, kernel](auto* source, auto* targets) { kernel(source, targets[0], width, table8); };
            };
            ExpectLikeReference({width, 4 * width}, mapped(MapLine8), mapped(Reference::MapLine8));
        }
    });
}

} // namespace
