// The scripted camera keeps its promises: other tests blame our code on its word.
#include "gev/net/CrossSocket.h"
#include "support/ScriptedCamera.h"

#include <chrono>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <vector>

namespace VX3 {
namespace {

using namespace Test;
using namespace std::chrono_literals;

struct Got {
    std::vector<PacketAddress> order;
    std::map<PacketAddress, std::vector<std::uint8_t>> payload; // payload packets' data, by address
    std::map<PacketAddress, std::uint16_t> status;
    std::size_t largest = 0;
};

class ScriptedStreamTest : public testing::Test {
protected:
    ScriptedStreamTest() : host(0, 0, 0x7F000001, 0) {
        config.width = 1000;
        config.height = 100; // 69 payload packets at 1500
        camera = std::make_unique<ScriptedCamera>(config);
    }
    NET_ENDPOINT HostEnd() const { return host.GetLocalEndPoint(); }
    // Until the stream is over and nothing has come for a while.
    void Receive(Got& got, std::uint32_t quietMs = 400) {
        std::vector<std::uint8_t> buffer(16384);
        std::uint32_t ip = 0;
        std::uint32_t port = 0;
        for (;;) {
            const StatusCode size = host.RecvFrom(buffer.data(), buffer.size(), quietMs, ip, port);
            if (size < 0) {
                if (camera->WaitStreamDone(0ms))
                    return;
                continue;
            }
            Gvsp::Header header;
            ASSERT_TRUE(Gvsp::DecodeHeader(buffer.data(), static_cast<std::size_t>(size), header));
            const PacketAddress address{header.blockId, header.packetId};
            got.order.push_back(address);
            got.status[address] = header.status;
            got.largest = std::max(got.largest, static_cast<std::size_t>(size));
            if (header.Is(Gvsp::Format::Payload))
                got.payload[address].assign(buffer.begin() + static_cast<std::ptrdiff_t>(header.Size()),
                                            buffer.begin() + size);
        }
    }
    Got RunScript(const StreamScript& script) {
        Got got;
        camera->SetStreamScript(script);
        camera->StartStream(HostEnd());
        Receive(got); // while it sends: the socket's buffer holds no whole stream
        return got;
    }
    std::vector<std::uint8_t> Frame(const Got& got, std::uint64_t block) const {
        std::vector<std::uint8_t> frame;
        for (const auto& [address, data] : got.payload)
            if (address.block == block)
                frame.insert(frame.end(), data.begin(), data.end());
        return frame;
    }

    CameraConfig config;
    std::unique_ptr<ScriptedCamera> camera;
    CrossSocket host;
};

TEST_F(ScriptedStreamTest, FramesArriveWholeHoweverTheyAreSent) {
    for (const bool segmentation : {true, false})
        for (const bool extended : {true, false}) {
            StreamScript script;
            script.frames = 3;
            script.firstBlockId = extended ? 0x123456789AULL : 65535;
            script.segmentation = segmentation;
            script.extendedIds = extended;
            script.bytesPerSecond = 1e8;
            const Got got = RunScript(script);
            const std::uint64_t second = extended ? 0x123456789BULL : 1;
            const auto frame = Frame(got, second);
            ASSERT_EQ(frame.size(), 100000U);
            EXPECT_EQ(
                std::memcmp(frame.data(), ScriptedStream::ExpectedData(second, frame.size()), frame.size()),
                0);
            EXPECT_NE(frame, Frame(got, second + 1));
            EXPECT_EQ(got.order.size(), 3U * 71U);
            EXPECT_EQ(got.largest, 1472U);
        }
}

TEST_F(ScriptedStreamTest, ExactFaultsHitExactlyTheirPackets) {
    StreamScript script;
    script.frames = 1;
    script.drop = {{1, 0}, {1, 5}};
    script.duplicate = {{1, 7}};
    script.delay = {{{1, 10}, 3}};
    script.status = {{{1, 20}, 0x800C}};
    script.omitTrailer = true;
    const Got got = RunScript(script);
    std::vector<std::uint32_t> ids;
    for (const PacketAddress& address : got.order)
        ids.push_back(address.packet);
    std::vector<std::uint32_t> expected = {1, 2, 3, 4, 6, 7, 7, 8, 9, 11, 12, 10, 13};
    EXPECT_EQ(std::vector<std::uint32_t>(ids.begin(), ids.begin() + 13), expected);
    EXPECT_EQ(ids.back(), 69U);
    EXPECT_EQ(got.status.at({1, 20}), 0x800C);
    EXPECT_EQ(camera->Counts().dropped, 2U);
}

TEST_F(ScriptedStreamTest, ChanceFaultsFollowTheSeed) {
    StreamScript script;
    script.frames = 20;
    script.bytesPerSecond = 1e8;
    script.dropProbability = 0.05;
    script.reorderWindow = 32;
    const Got first = RunScript(script);
    const Got again = RunScript(script);
    EXPECT_EQ(first.order, again.order);
    const StreamCounts counts = camera->Counts();
    EXPECT_GT(counts.dropped, 30U);
    EXPECT_LT(counts.dropped, 120U);
    EXPECT_EQ(counts.packets, 20U * 71U);
    EXPECT_EQ(first.order.size(), counts.packets - counts.dropped);
    EXPECT_FALSE(std::is_sorted(first.order.begin(), first.order.end()));
}

TEST_F(ScriptedStreamTest, ResendsAreServedFromMemory) {
    StreamScript script;
    script.frames = 3;
    script.drop = {{2, 4}, {2, 70}};
    script.resendMemory = 2;
    ASSERT_EQ(RunScript(script).payload.count({2, 4}), 0U);
    std::atomic<std::uint16_t> counter{1};
    CrossSocket control(camera->Ip(), 0, 0x7F000001, 0);
    const auto ask = [&](std::uint64_t block, std::uint32_t first, std::uint32_t last) {
        std::uint8_t bytes[28];
        const std::size_t size =
            Gvcp::EncodePacketResend({bytes, sizeof(bytes)}, 1, {false, block, first, last, 0});
        ASSERT_EQ(control.SendTo(bytes, size, camera->Ip(), camera->GvcpPort()),
                  static_cast<StatusCode>(size));
    };
    ask(2, 4, 4);
    ask(2, 69, 0xFFFFFFFF); // to the block's end
    ask(1, 1, 1);           // no longer held
    ask(77, 1, 1);          // never was
    Got got;
    Receive(got);
    EXPECT_EQ(got.order, (std::vector<PacketAddress>{{2, 4}, {2, 69}, {2, 70}}));
    EXPECT_EQ(got.status.at({2, 4}), Gvcp::AckStatus::PacketResent);
    const auto& data = got.payload.at({2, 4});
    EXPECT_EQ(std::memcmp(data.data(), ScriptedStream::ExpectedData(2, 100000) + 3 * 1464, data.size()), 0);
    EXPECT_EQ(camera->Counts().requestsNotServed, 2U);
    EXPECT_EQ(camera->ResendRequests().at({2, 70}), 1U);
}

TEST_F(ScriptedStreamTest, SendsTwoGigabytesInSeconds) {
    config.width = 1024;
    config.height = 1024;
    config.packetSize = 8192;
    ScriptedCamera large(config);
    StreamScript script;
    script.frames = 500;
    large.SetStreamScript(script);
    const auto start = std::chrono::steady_clock::now();
    large.StartStream(HostEnd());
    EXPECT_TRUE(large.WaitStreamDone(30s));
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(large.Counts().frames, 500U);
    RecordProperty("MBps", std::to_string(500 * 1.048576 / elapsed.count()));
    std::printf("sender alone: %.0f MB/s\n", 500 * 1.048576 / elapsed.count());
}

TEST_F(ScriptedStreamTest, VanishesAndReturns) {
    StreamScript script;
    script.framesPerSecond = 100;
    camera->SetStreamScript(script);
    camera->StartStream(HostEnd());
    std::this_thread::sleep_for(50ms);
    camera->Vanish();
    Got got;
    Receive(got);
    EXPECT_FALSE(got.order.empty());
    Got later;
    Receive(later);
    EXPECT_TRUE(later.order.empty());
    camera->Return();
    script.frames = 1;
    script.framesPerSecond = 0;
    EXPECT_EQ(RunScript(script).order.size(), 71U);
}

} // namespace
} // namespace VX3
