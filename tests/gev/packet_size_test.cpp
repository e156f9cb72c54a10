#include "gev/control/GvspPacketSizeTester.h"

#include "support/TestCamera.h"

#include <chrono>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace VX3 {
namespace {

using namespace Test;
using namespace Simulated;

struct Trial {
    std::int64_t size = 0;
    std::vector<std::uint32_t> tried; // packet sizes fired
    std::uint32_t finalSize = 0;
    std::uint32_t port = 0;
    std::uint32_t destination = 0;
};

Trial RunTest(const CameraConfig& config, std::int64_t max, std::int64_t min, std::int64_t inc) {
    TestCamera camera(config);
    std::atomic<std::uint16_t> counter{1};
    GevCmdHelper helper(TestCamera::HostParam(), camera.CameraParam(), 500, counter, camera.GvcpPort());
    (void)helper.WriteRegister(Bootstrap::ControlChannelPrivilege, 2);
    camera.ClearSeen();
    Trial trial;
    trial.size =
        GvspPacketSizeTester::TestPacketSize(helper, camera.Ip(), TestCamera::HostParam().ip, max, min, inc);
    for (const SeenCommand& seen : camera.Seen())
        if (seen.address == Bootstrap::StreamPacketSize && (seen.value & Bootstrap::FireTestPacket) != 0)
            trial.tried.push_back(seen.value & Bootstrap::PacketSizeMask);
    trial.finalSize = camera.Register(Bootstrap::StreamPacketSize);
    trial.port = camera.Register(Bootstrap::StreamPort);
    trial.destination = camera.Register(Bootstrap::StreamDestination);
    return trial;
}

TEST(GvspPacketSizeTester, RoundsDownOntoTheGrid) {
    EXPECT_EQ(GvspPacketSizeTester::GetValidPacketSize(8960, 576, 0), 8960);
    EXPECT_EQ(GvspPacketSizeTester::GetValidPacketSize(8963, 576, 4), 8960);
    EXPECT_EQ(GvspPacketSizeTester::GetValidPacketSize(1500, 220, 500), 1220);
    // Limits out of a broken description.
    (void)GvspPacketSizeTester::GetValidPacketSize(1500, std::numeric_limits<std::int64_t>::min(), -1);
    (void)GvspPacketSizeTester::GetValidPacketSize(1500, 0, std::numeric_limits<std::int64_t>::min());
}

TEST(GvspPacketSizeTester, SmallLimitsNeedNoTraffic) {
    const Trial small = RunTest({}, 1400, 576, 4);
    EXPECT_EQ(small.size, 1400);
    EXPECT_EQ(RunTest({}, 1999, 577, 4).size, 1497);
    EXPECT_EQ(RunTest({}, 1500, 577, 4).size, 1497) << "on the grid";
    EXPECT_TRUE(small.tried.empty());
}

TEST(GvspPacketSizeTester, TakesTheLargestThatArrivesAndDisablesTheChannel) {
    CameraConfig config;
    config.largestTestPacket = 7000;
    const Trial trial = RunTest(config, 9000, 576, 4);
    EXPECT_EQ(trial.size, 6960);
    EXPECT_EQ(trial.tried, (std::vector<std::uint32_t>{8960, 7960, 6960}));
    EXPECT_EQ(trial.finalSize, 6960U | Bootstrap::DoNotFragment);
    EXPECT_EQ(trial.port, 0U);
    EXPECT_EQ(trial.destination, 0U);
    EXPECT_EQ(RunTest({}, 8000, 576, 4).tried, (std::vector<std::uint32_t>{7960}));
    EXPECT_EQ(RunTest({}, 8960, 576, 4).size, 8960) << "the limits themselves are tried";
    EXPECT_EQ(RunTest({}, 2000, 1960, 4).size, 1960);
}

TEST(GvspPacketSizeTester, ACameraWithoutTestPacketsGetsTheEthernetSize) {
    CameraConfig config;
    config.sendsTestPackets = false;
    const auto start = std::chrono::steady_clock::now();
    const Trial trial = RunTest(config, 9000, 576, 8);
    EXPECT_EQ(trial.size, 1496);
    EXPECT_EQ(trial.tried.size(), 8U);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
}

} // namespace
} // namespace VX3
