// The whole camera over its sockets: what it sends, loses, resends, and how it comes and goes.
#include "gev/net/CrossSocket.h"
#include "gev/protocol/Gvsp.h"
#include "support/TestCamera.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <thread>
#include <vector>

namespace VX3::Test {
namespace {

using namespace Simulated;
using namespace std::chrono_literals;

constexpr std::size_t FrameBytes = 100000; // 69 payload packets at 1500
constexpr std::size_t PerPacket = 1464;

struct Got {
    std::vector<PacketAddress> order;
    std::map<PacketAddress, std::vector<std::uint8_t>> payload; // payload packets' data, by address
    std::map<PacketAddress, std::uint16_t> status;
    std::size_t largest = 0;
};

class CameraTest : public testing::Test {
protected:
    CameraTest() : host(0, 0, 0x7F000001, 0), camera(Config()) {}
    static CameraConfig Config() {
        CameraConfig config;
        config.width = 1000;
        config.height = 100;
        return config;
    }
    // Until the stream is over and nothing has come for a while.
    void Receive(Got& got, std::uint32_t quietMs = 300) {
        std::vector<std::uint8_t> buffer(16384);
        std::uint32_t ip = 0;
        std::uint32_t port = 0;
        for (;;) {
            const StatusCode size = host.RecvFrom(buffer.data(), buffer.size(), quietMs, ip, port);
            if (size < 0) {
                if (camera.WaitStreamDone(0ms))
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
                got.payload[address].assign(
                    buffer.begin() + static_cast<std::ptrdiff_t>(header.Size()),
                    buffer.begin() +
                        std::min<std::ptrdiff_t>(size, static_cast<std::ptrdiff_t>(buffer.size())));
        }
    }
    Got Run(const StreamScript& script) {
        Got got;
        EXPECT_EQ(camera.SetStreamScript(script), Status::Ok);
        EXPECT_EQ(camera.StartStream(host.GetLocalEndPoint()), Status::Ok);
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
    void Ask(const Gvcp::ResendRequest& request, CrossSocket& from) {
        std::uint8_t bytes[28];
        const std::size_t size = Gvcp::EncodePacketResend({bytes, sizeof(bytes)}, 1, request);
        ASSERT_EQ(from.SendTo(bytes, size, camera.Ip(), camera.GvcpPort()), static_cast<StatusCode>(size));
    }

    CrossSocket host;
    TestCamera camera;
};

TEST_F(CameraTest, FramesArriveWholeHoweverTheyAreSent) {
    for (const bool segmentation : {true, false})
        for (const bool extended : {true, false})
            for (const bool moving : {true, false}) {
                StreamScript script;
                script.frames = 3;
                script.firstBlockId = extended ? 0x123456789AULL : 65535;
                script.segmentation = segmentation;
                script.extendedIds = extended;
                script.movingPicture = moving;
                script.bytesPerSecond = 1e8;
                const Got got = Run(script);
                const std::uint64_t second = extended ? 0x123456789BULL : 1;
                const auto frame = Frame(got, second);
                ASSERT_EQ(frame.size(), FrameBytes);
                EXPECT_EQ(std::memcmp(frame.data(), Camera::ExpectedData(moving ? second : 1, FrameBytes),
                                      FrameBytes),
                          0);
                EXPECT_EQ(frame == Frame(got, second + 1), !moving);
                EXPECT_EQ(got.order.size(), 3U * 71U);
                EXPECT_EQ(got.largest, 1472U);
            }
    // The system takes no trains of packets that it would have to fragment: they leave singly.
    ASSERT_EQ(camera.SetRegister(Bootstrap::StreamPacketSize, 65535), Status::Ok);
    StreamScript script;
    script.frames = 2;
    const Got got = Run(script); // the socket keeps 16 KiB of each and tells its whole length
    EXPECT_EQ(got.order.size(), 2U * 4U);
    EXPECT_EQ(got.largest, 65507U);
}

TEST_F(CameraTest, ExactFaultsHitExactlyTheirPackets) {
    StreamScript script;
    script.frames = 1;
    script.drop = {{1, 0}, {1, 5}};
    script.duplicate = {{1, 7}};
    script.delay = {{{1, 10}, 3}};
    script.status = {{{1, 20}, 0x800C}};
    script.omitTrailer = true;
    const Got got = Run(script);
    std::vector<std::uint32_t> ids;
    for (const PacketAddress& address : got.order)
        ids.push_back(address.packet);
    ASSERT_GT(ids.size(), 13U);
    EXPECT_EQ(std::vector<std::uint32_t>(ids.begin(), ids.begin() + 13),
              (std::vector<std::uint32_t>{1, 2, 3, 4, 6, 7, 7, 8, 9, 11, 12, 10, 13}));
    EXPECT_EQ(ids.back(), 69U);
    EXPECT_EQ(got.status.at({1, 20}), 0x800C);
    EXPECT_EQ(camera.Counts().dropped, 2U);
    EXPECT_EQ(camera.Counts().duplicated, 1U);
}

TEST_F(CameraTest, ChanceFaultsFollowTheSeed) {
    StreamScript script;
    script.frames = 20;
    script.bytesPerSecond = 1e8;
    script.dropProbability = 0.05;
    script.reorderWindow = 32;
    const Got first = Run(script);
    EXPECT_EQ(first.order, Run(script).order);
    StreamCounts counts = camera.Counts();
    EXPECT_GT(counts.dropped, 30U);
    EXPECT_LT(counts.dropped, 120U);
    EXPECT_EQ(counts.packets, 20U * 71U);
    EXPECT_EQ(first.order.size(), counts.packets - counts.dropped);
    EXPECT_FALSE(std::is_sorted(first.order.begin(), first.order.end()));

    script = {};
    script.frames = 20;
    script.bytesPerSecond = 1e8;
    script.burstProbability = 0.005;
    script.burstPackets = 10;
    script.dropLeaderProbability = 0.5;
    const Got burst = Run(script);
    std::size_t leaders = 0;
    std::size_t gaps = 0;
    for (std::size_t i = 1; i < burst.order.size(); ++i) {
        leaders += burst.order[i].packet == 0 ? 1 : 0;
        gaps += burst.order[i].packet > burst.order[i - 1].packet + 10 ? 1 : 0;
    }
    EXPECT_GT(leaders, 2U);
    EXPECT_LT(leaders, 18U);
    EXPECT_GT(gaps, 0U) << "no burst inside a frame";
}

TEST_F(CameraTest, ResendsAreServedFromMemory) {
    StreamScript script;
    script.frames = 3;
    script.drop = {{2, 4}, {2, 70}};
    script.resendMemory = 2;
    ASSERT_EQ(Run(script).payload.count({2, 4}), 0U);
    CrossSocket control(camera.Ip(), 0, 0x7F000001, 0);
    CrossSocket stranger(camera.Ip(), 0, 0x7F000009, 0);
    Ask({false, 2, 4, 4, 0}, control);
    Ask({false, 2, 69, 0xFFFFFFFF, 0}, control); // to the block's end
    Ask({false, 1, 1, 1, 0}, control);           // no longer held
    Ask({false, 77, 1, 1, 0}, control);          // never was
    Ask({false, 2, 9, 1, 0}, control);           // an empty range
    Ask({true, 2, 1, 1, 0}, control);            // the other kind of ids
    Ask({false, 2, 1, 69, 0}, stranger);         // not whom the stream goes to
    Got got;
    Receive(got);
    EXPECT_EQ(got.order, (std::vector<PacketAddress>{{2, 4}, {2, 69}, {2, 70}}));
    EXPECT_EQ(got.status.at({2, 4}), Gvcp::AckStatus::PacketResent);
    const auto& data = got.payload.at({2, 4});
    EXPECT_EQ(std::memcmp(data.data(), Camera::ExpectedData(2, FrameBytes) + 3 * PerPacket, data.size()), 0);
    EXPECT_EQ(camera.Counts().requestsNotServed, 3U);
    EXPECT_EQ(camera.Counts().resendRequests, 6U);
    EXPECT_EQ(camera.ResendRequests().at({2, 70}), 1U);
}

TEST_F(CameraTest, ResendsMayComeLateOrBeRefused) {
    CrossSocket control(camera.Ip(), 0, 0x7F000001, 0);
    StreamScript script;
    script.frames = 1;
    script.resendDelayMs = 150;
    (void)Run(script);
    const auto start = std::chrono::steady_clock::now();
    Ask({false, 1, 3, 4, 0}, control);
    std::uint8_t buffer[2048];
    std::uint32_t ip = 0;
    std::uint32_t port = 0;
    EXPECT_EQ(host.RecvFrom(buffer, sizeof(buffer), 2000, ip, port), 1472);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 150ms);
    Got rest;
    Receive(rest);
    script.resendDelayMs = 0;
    script.resendErrorStatus = 0x8012;
    script.resendNotHeldStatus = 0x800C;
    (void)Run(script);
    Ask({false, 1, 3, 4, 0}, control);
    Ask({false, 5, 1, 0xFFFFFF, 0}, control);
    Got got;
    Receive(got);
    EXPECT_EQ(got.status.at({1, 4}), 0x8012);
    EXPECT_EQ(got.status.at({5, 64}), 0x800C);
    EXPECT_EQ(got.order.size(), 66U) << "a refusal is bounded, whatever is asked for";
    EXPECT_EQ(got.largest, 8U);
    EXPECT_EQ(camera.Counts().packetsResent, 0U);
}

TEST_F(CameraTest, BlocksOfAClientAreSentInTurn) {
    StreamScript script;
    script.frames = 5;
    for (const std::uint8_t fill : {0x11, 0x22}) {
        Block block;
        block.info.payloadType = Gvsp::PayloadType::RawData;
        block.data.push_back(SharedBytes::Of(std::vector<std::uint8_t>(3000, fill)));
        script.blocks.push_back(block);
    }
    const Got got = Run(script);
    EXPECT_EQ(Frame(got, 3), std::vector<std::uint8_t>(3000, 0x11));
    EXPECT_EQ(Frame(got, 4), std::vector<std::uint8_t>(3000, 0x22));
    EXPECT_EQ(camera.Counts().bytes, 15000U);
    script.blocks[1].data.clear();
    ASSERT_EQ(camera.SetStreamScript(script), Status::Ok);
    EXPECT_EQ(camera.StartStream(host.GetLocalEndPoint()), Status::NotAvailable);
    ASSERT_EQ(camera.SetStreamScript({}), Status::Ok);
    for (const std::uint32_t width : {0U, 0xFFFFFFFFU, 0x10000000U}) {
        (void)camera.SetRegister(CameraRegister::Width, width);
        EXPECT_EQ(camera.StartStream(host.GetLocalEndPoint()), Status::NotAvailable) << width;
    }
}

TEST_F(CameraTest, KeepsItsRateAndItsPacketDelay) {
    StreamScript script;
    script.frames = 10;
    script.bytesPerSecond = 5e6;
    (void)Run(script);
    EXPECT_GE(camera.Counts().seconds, 0.17); // a busy machine only makes it longer
    EXPECT_LE(camera.Counts().seconds, 2);
    script.bytesPerSecond = 0;
    (void)camera.SetRegister(Bootstrap::StreamPacketDelay, 300000); // ns: 71 packets in 21 ms
    (void)Run(script);
    EXPECT_GE(camera.Counts().seconds, 0.18);
    EXPECT_LE(camera.Counts().seconds, 2);
    // Waits of hours end with the stream.
    (void)camera.SetRegister(Bootstrap::StreamPacketDelay, 0xFFFFFFFF);
    script.framesPerSecond = 1e-300;
    (void)camera.SetStreamScript(script);
    ASSERT_EQ(camera.StartStream(host.GetLocalEndPoint()), Status::Ok);
    const auto start = std::chrono::steady_clock::now();
    camera.StopStream();
    EXPECT_LT(std::chrono::steady_clock::now() - start, 500ms);
}

TEST_F(CameraTest, VanishesReturnsStopsAndStartsAgain) {
    (void)camera.SetRegister(CameraRegister::Gain, 7);
    ASSERT_EQ(camera.StartStream(host.GetLocalEndPoint()), Status::Ok);
    camera.Vanish();
    Got got;
    Receive(got); // ends with the stream
    EXPECT_EQ(camera.StartStream(host.GetLocalEndPoint()), Status::WrongState);
    camera.Return();
    EXPECT_EQ(camera.Register(CameraRegister::Gain), 0U);
    StreamScript script;
    script.frames = 1;
    EXPECT_EQ(Run(script).order.size(), 71U);

    EXPECT_EQ(camera.Start(), Status::WrongState);
    CameraConfig same = Config();
    same.ip = camera.Ip();
    Camera second(same);
    EXPECT_EQ(second.Start(), Status::OpenFailed);
    EXPECT_FALSE(second.IsRunning());
    camera.Stop();
    EXPECT_EQ(second.Start(), Status::Ok);
    second.Stop();
    EXPECT_EQ(camera.StartStream(host.GetLocalEndPoint()), Status::WrongState);
    EXPECT_EQ(camera.Start(), Status::Ok);
    EXPECT_EQ(Run(script).order.size(), 71U);
    EXPECT_EQ(camera.StartStream({}, 4), Status::NotFound);
}

} // namespace
} // namespace VX3::Test
