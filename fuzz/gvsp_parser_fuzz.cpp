// Sequences of datagrams through the image parser, resend requests and silences included. Input: one byte of
// options, then records {length (2 bytes), time passed (1 byte), datagram}. Images are read whole when they
// come out, so that a datagram outside its image or an image larger than its buffer is found.
#include "gev/stream/GvspParserImageA.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

using namespace VX3;

namespace {

volatile unsigned g_sink;

void ReadWhole(const IImage& image) {
    const ImageInfo& info = *image.GetImageInfo();
    const unsigned char* pixels = image.GetImageBuff();
    unsigned sum = 0;
    for (unsigned int i = 0; i < info.ImageDataSize(); i += 61)
        sum += pixels[i];
    if (info.ImageDataSize() != 0)
        sum += pixels[info.ImageDataSize() - 1];
    g_sink = sum;
}

} // namespace

// The library logs to the console; that would be most of the run.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    return std::freopen("/dev/null", "w", stdout) == nullptr ? 1 : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1)
        return 0;
    static const auto recycle = ImagePoolFactory::CreateRecycleImagePool(1U << 26, "fuzz");
    const unsigned options = data[0];
    GevStreamParam param;
    param.packetSize = (options & 1) != 0 ? 100 : (options & 2) != 0 ? 40 : 576;
    param.bufferSize = (options & 4) != 0 ? 1 : 4096;
    param.resendSupported = (options & 8) != 0 ? 0 : 1;
    GvspParserImageA::Options parserOptions;
    parserOptions.redirect = (options & 16) != 0;
    const auto pool = (options & 32) != 0
                          ? ImagePoolFactory::CreateRingAImagePool(16 * 8192, 8192, 4096, "fuzz ring")
                          : recycle;
    GvspParserImageA parser([](std::unique_ptr<IImage>&& image, unsigned int) { ReadWhole(*image); }, param,
                            pool, (options & 64) != 0 ? 3 : 0, parserOptions);
    auto now = GvspParserImageA::TimePoint(std::chrono::seconds(1));
    WireRoom next;
    GvspResendInfo info;
    for (std::size_t at = 1; at + 3 <= size;) {
        const std::size_t wanted = (std::size_t{data[at]} << 8 | data[at + 1]) % 600;
        const unsigned pause = data[at + 2];
        at += 3;
        const std::size_t length = std::min(wanted, size - at);
        now += std::chrono::microseconds(pause < 128 ? pause : (pause - 127) * 1000U);
        if (pause >= 128)
            parser.CheckSilence(next, now);
        // Exactly as large as the datagram, so that a read behind its end is seen.
        std::vector<std::uint8_t> own(data + at, data + at + length);
        const std::uint8_t* packet = own.data();
        if (length != 0 && next.data != nullptr && next.size >= length) {
            std::memcpy(next.data, own.data(), length);
            packet = next.data;
        }
        (void)parser.HandlePacket(packet, length, next, now);
        while (parser.GetResendInfo(info, now)) {
        }
        at += length;
    }
    if ((options & 128) != 0)
        for (int i = 0; i < 40; ++i)
            parser.CheckSilence(next, now += std::chrono::milliseconds(7));
    (void)parser.Flush();
    return 0;
}
