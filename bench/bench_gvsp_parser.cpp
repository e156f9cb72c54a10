// The image parser from memory: what its bookkeeping costs a packet, against a bare memcpy of the same
// payload into the same kind of image, and that it allocates nothing a packet.
//
//   bench_gvsp_parser [--smoke]
//
// Prints medians over pairs measured one after the other, with the spread. Ends with status 1 when a packet
// allocates.
#include "support/CountingAllocator.h"

#include "gev/protocol/Gvsp.h"
#include "gev/stream/GvspParserImageA.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <vector>

using namespace VX3;

namespace {

// CPU time: a machine that others share must not count.
struct Clock {
    using duration = std::chrono::nanoseconds;
    using time_point = std::chrono::steady_clock::time_point;
    static time_point now() {
        timespec time{};
        (void)::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return time_point(std::chrono::seconds(time.tv_sec + 1) + std::chrono::nanoseconds(time.tv_nsec));
    }
};

struct Frame {
    std::vector<std::vector<std::uint8_t>> packets; // header in front, block id to be set
    std::size_t payload = 0;
};

Frame MakeFrame(std::uint32_t width, std::uint32_t height, std::uint32_t packetSize) {
    Frame frame;
    frame.payload = std::size_t{width} * height;
    const std::size_t perPacket = Gvsp::DataPerPacket(packetSize, false);
    const auto count = static_cast<std::uint32_t>((frame.payload + perPacket - 1) / perPacket);
    const std::vector<std::uint8_t> data(perPacket, 0x5A);
    for (std::uint32_t id = 0; id <= count + 1; ++id) {
        std::vector<std::uint8_t> packet(packetSize);
        Gvsp::Header header;
        header.blockId = 1;
        header.packetId = id;
        const WireRoom room{packet.data(), packet.size()};
        std::size_t size = 0;
        if (id == 0) {
            Gvsp::Leader leader;
            leader.pixelFormat = 0x01080001;
            leader.sizeX = width;
            leader.sizeY = height;
            size = Gvsp::EncodeLeader(room, header, leader);
        } else if (id == count + 1) {
            Gvsp::Trailer trailer;
            trailer.sizeY = height;
            size = Gvsp::EncodeTrailer(room, header, trailer);
        } else {
            const std::size_t rest = frame.payload - perPacket * (id - 1);
            size = Gvsp::EncodePayload(room, header, {data.data(), std::min(perPacket, rest)});
        }
        packet.resize(size);
        frame.packets.push_back(std::move(packet));
    }
    return frame;
}

double Seconds(Clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

// Datagrams come from one place, as from a receive buffer.
double ParseFrames(GvspParserImageA& parser, Frame& frame, unsigned frames, std::uint16_t& blockId) {
    const auto start = Clock::now();
    WireRoom next;
    for (unsigned n = 0; n < frames; ++n) {
        const auto now = Clock::now();
        for (std::vector<std::uint8_t>& packet : frame.packets) {
            Wire::Store<std::uint16_t>(packet.data() + 2, blockId);
            (void)parser.HandlePacket(packet.data(), packet.size(), next, now);
        }
        blockId = blockId == 0xFFFF ? std::uint16_t{1} : static_cast<std::uint16_t>(blockId + 1);
    }
    return Seconds(Clock::now() - start);
}

double CopyFrames(std::vector<std::vector<std::uint8_t>>& images, const Frame& frame, unsigned frames) {
    const auto start = Clock::now();
    for (unsigned n = 0; n < frames; ++n) {
        std::uint8_t* to = images[n % images.size()].data();
        for (std::size_t i = 1; i + 1 < frame.packets.size(); ++i) {
            const std::vector<std::uint8_t>& packet = frame.packets[i];
            std::memcpy(to, packet.data() + Gvsp::StandardHeaderSize,
                        packet.size() - Gvsp::StandardHeaderSize);
            to += packet.size() - Gvsp::StandardHeaderSize;
        }
    }
    return Seconds(Clock::now() - start);
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

struct Case {
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t packetSize;
};

bool Run(const Case& c, unsigned pairs, unsigned frames) {
    Frame frame = MakeFrame(c.width, c.height, c.packetSize);
    GevStreamParam param;
    param.packetSize = c.packetSize;
    param.bufferSize = c.width * c.height;
    param.resendSupported = 1;
    auto pool = ImagePoolFactory::CreateRecycleImagePool(1ULL << 30, "bench");
    GvspParserImageA::Options options;
    options.redirect = false; // the copying road: the payload is moved once by either side
    std::uint64_t images = 0;
    GvspParserImageA parser([&](std::unique_ptr<IImage>&&, unsigned int) { ++images; }, param, pool, 0,
                            options);
    std::vector<std::vector<std::uint8_t>> bare(8, std::vector<std::uint8_t>(c.width * c.height + 65536U));
    std::uint16_t blockId = 1;
    (void)ParseFrames(parser, frame, 16, blockId); // pools and caches fill
    (void)CopyFrames(bare, frame, 16);

    std::vector<double> ratios, parsed, copied;
    std::uint64_t allocated = 0;
    for (unsigned pair = 0; pair < pairs; ++pair) {
        const std::uint64_t before = Test::Allocations();
        parsed.push_back(ParseFrames(parser, frame, frames, blockId));
        allocated += Test::Allocations() - before;
        copied.push_back(CopyFrames(bare, frame, frames));
        ratios.push_back(parsed.back() / copied.back());
    }
    const double packets = static_cast<double>(frames) * static_cast<double>(frame.packets.size());
    const double perFrame = static_cast<double>(allocated) / (static_cast<double>(pairs) * frames);
    const auto [low, high] = std::minmax_element(ratios.begin(), ratios.end());
    std::printf("%4u x %4u in packets of %4u: %6.1f ns a packet, bare memcpy %6.1f ns, bookkeeping %5.1f ns; "
                "ratio %.2f (%.2f .. %.2f over %u pairs); allocations a frame %.1f\n",
                c.width, c.height, c.packetSize, Median(parsed) / packets * 1e9,
                Median(copied) / packets * 1e9, (Median(parsed) - Median(copied)) / packets * 1e9,
                Median(ratios), *low, *high, pairs, perFrame);
    if (images != 16U + static_cast<std::uint64_t>(pairs) * frames) {
        std::printf("  %llu images came out\n", static_cast<unsigned long long>(images));
        return false;
    }
    // A frame costs what its pool and its converter take; that may not grow with its packets.
    return perFrame <= 16;
}

} // namespace

int main(int argc, char** argv) {
    const bool smoke = argc > 1 && std::strcmp(argv[1], "--smoke") == 0;
    const unsigned pairs = smoke ? 2 : 9;
    const unsigned frames = smoke ? 10 : 200;
    bool good = true;
    for (const Case& c : {Case{1920, 1200, 1500}, Case{1920, 1200, 9000}, Case{640, 480, 1500}})
        good = Run(c, pairs, frames) && good;
    if (!good)
        std::printf("FAILED: a packet allocates, or frames were lost\n");
    return good ? 0 : 1;
}
