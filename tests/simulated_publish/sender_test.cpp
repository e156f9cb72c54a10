// The sender of a published camera: exact datagrams, its queue, its limit, and what it sends again.
#include "gev/net/CrossSocket.h"
#include "gev/protocol/Gvsp.h"
#include "simulated/publish/GevSimuGvsp.h"
#include "support/TestImages.h"
#include "support/Threads.h"
#include "vx3/image/IImagePool.h"

#include <gtest/gtest.h>

#include <thread>

namespace VX3::Test {
namespace {

using namespace std::chrono_literals;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t Loopback = 0x7F000001;

std::shared_ptr<IImage> Picture(std::uint32_t width, std::uint32_t height,
                                std::uint64_t stamp = 0x1122334455) {
    ImageInfo info;
    info.imageType = ImageTypeImage;
    info.width = width;
    info.height = height;
    info.pixelFormat = Mono8;
    info.offsetX = 3;
    info.timestampHigh = static_cast<std::uint32_t>(stamp >> 32);
    info.timestampLow = static_cast<std::uint32_t>(stamp);
    std::vector<unsigned char> pixels(std::size_t{width} * height);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<unsigned char>(i * 31 + i / 256);
    return ImageCreator::Create(&info, nullptr, pixels.data());
}

class SenderTest : public testing::Test {
protected:
    void Start(std::uint32_t packetSize = 1500) {
        ASSERT_EQ(sender.Start({Loopback, 0}, host.GetLocalEndPoint(), packetSize), Status::Ok);
    }
    // The next datagram; empty after a while without one.
    Bytes Next() {
        Bytes buffer(70000);
        std::uint32_t ip = 0;
        std::uint32_t port = 0;
        const StatusCode size = host.RecvFrom(buffer.data(), buffer.size(), 1000, ip, port);
        buffer.resize(Failed(size) ? 0 : static_cast<std::size_t>(size));
        from = port;
        return buffer;
    }

    CrossSocket host{0, 0, Loopback, 0};
    GevSimuGvsp sender;
    std::uint32_t from = 0;
};

TEST_F(SenderTest, AFrameIsLeaderPayloadAndTrailer) {
    Start();
    ASSERT_EQ(sender.PushImage(Picture(1464, 1)), Status::Ok);
    const Bytes leader = Next();
    EXPECT_EQ(leader,
              (Bytes{0, 0, 0, 1, 1, 0,    0, 0, 0, 0, 0, 1, 0, 0, 0, 0x11, 0x22, 0x33, 0x44, 0x55, 1, 8,
                     0, 1, 0, 0, 5, 0xB8, 0, 0, 0, 1, 0, 0, 0, 3, 0, 0,    0,    0,    0,    0,    0, 0}));
    EXPECT_EQ(from, sender.SourcePort());
    const Bytes payload = Next();
    ASSERT_EQ(payload.size(), 1472U);
    EXPECT_EQ(Bytes(payload.begin(), payload.begin() + 8), (Bytes{0, 0, 0, 1, 3, 0, 0, 1}));
    EXPECT_EQ(payload[8 + 33], 33 * 31 % 256);
    EXPECT_EQ(Next(), (Bytes{0, 0, 0, 1, 2, 0, 0, 2, 0, 0, 0, 1, 0, 0, 0, 1}));
    // A byte more is another packet.
    ASSERT_EQ(sender.PushImage(Picture(1465, 1)), Status::Ok);
    std::vector<std::size_t> sizes;
    for (int i = 0; i < 4; ++i)
        sizes.push_back(Next().size());
    EXPECT_EQ(sizes, (std::vector<std::size_t>{44, 1472, 9, 16}));
    EXPECT_TRUE(sender.IsSending());
    sender.Stop();
    EXPECT_FALSE(sender.IsSending());
    EXPECT_EQ(sender.GetCounts().stream.frames, 2U) << "counts outlive the stream";
}

TEST_F(SenderTest, FourImagesWaitAndAFifthIsRefused) {
    PushedBlocks blocks({1500, false});
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(blocks.Push(Picture(8, 8)), Status::Ok);
    EXPECT_EQ(blocks.Push(Picture(8, 8)), Status::QueueFull);
    // Ids go round within 16 bits, and 0 is none of them.
    EXPECT_EQ(Gvsp::NextBlockId(65535, false), 1U);
    EXPECT_EQ(sender.PushImage(Picture(8, 8)), Status::Ok) << "nobody wants it";
    GevSimuGvsp::Options options;
    options.packetDelay = 1s;
    sender.SetOptions(options);
    Start();
    int taken = 0;
    while (taken < 20 && sender.PushImage(Picture(8, 8)) == Status::Ok)
        ++taken;
    EXPECT_GE(taken, 4);
    EXPECT_LE(taken, 5) << "one may be on its way already";
    EXPECT_EQ(sender.GetCounts().overrun, 1U);
    const auto start = std::chrono::steady_clock::now();
    sender.Stop();
    EXPECT_LT(std::chrono::steady_clock::now() - start, 500ms) << "whatever delay a host asked for";
}

TEST_F(SenderTest, ImagesBeyondTheLimitAreDroppedAndCounted) {
    GevSimuGvsp::Options options;
    options.bandwidthLimit = 8ULL * 10000 * 50; // 50 images of 10000 bytes a second
    sender.SetOptions(options);
    Start(9000);
    int pushed = 0;
    for (const auto end = std::chrono::steady_clock::now() + 1s; std::chrono::steady_clock::now() < end;
         ++pushed) {
        EXPECT_EQ(sender.PushImage(Picture(100, 100)), Status::Ok) << "dropping one is no failure";
        std::this_thread::sleep_for(4ms);
    }
    const auto counts = sender.GetCounts();
    EXPECT_GT(counts.overLimit, static_cast<std::uint64_t>(pushed) / 2);
    EXPECT_GT(counts.stream.frames, 20U) << "a stream that is too fast gets slower, not silent";
    EXPECT_LT(counts.stream.frames, 75U);
}

TEST_F(SenderTest, PacketsAreSentAgainFromTheLastFrames) {
    for (const bool extended : {false, true}) {
        GevSimuGvsp::Options options;
        options.extendedIds = extended;
        options.resendFrames = 2;
        sender.SetOptions(options);
        Start();
        for (int frame = 0; frame < 3; ++frame) {
            ASSERT_EQ(sender.PushImage(Picture(1000, 4)), Status::Ok);
            for (int packet = 0; packet < 5; ++packet) // 3 of payload
                ASSERT_FALSE(Next().empty());
        }
        Gvsp::Header header;
        sender.ResendPacket(3, 2, 2);
        const Bytes again = Next();
        ASSERT_TRUE(Gvsp::DecodeHeader(again.data(), again.size(), header));
        EXPECT_EQ(header.blockId, 3U);
        EXPECT_EQ(header.packetId, 2U);
        EXPECT_EQ(header.status, Gvcp::AckStatus::PacketResent);
        EXPECT_EQ(header.extended, extended);
        const std::size_t perPacket = Gvsp::DataPerPacket(1500, extended);
        EXPECT_EQ(again[header.Size()], static_cast<std::uint8_t>(perPacket * 31 + perPacket / 256));
        sender.ResendPacket(1, 2, 2);
        const Bytes refused = Next();
        ASSERT_TRUE(Gvsp::DecodeHeader(refused.data(), refused.size(), header));
        EXPECT_EQ(header.status, Gvcp::AckStatus::PacketUnavailable);
        EXPECT_EQ(refused.size(), header.Size());
        sender.Stop();
    }
}

} // namespace
} // namespace VX3::Test
