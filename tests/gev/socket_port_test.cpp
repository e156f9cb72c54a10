#include "gev/net/SocketPort.h"

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace VX3 {
namespace {

constexpr std::uint32_t localhost = 0x7F000001;
constexpr std::uint32_t other = 0x7F000063;

long long MillisecondsOf(const std::function<void()>& action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start)
        .count();
}

TEST(SocketPort, IsNamedAfterItsPartnerAndBindsAFreePort) {
    SocketPort port(0xC0A80001, 3956, localhost, 0);
    EXPECT_EQ(port.Name(), "192.168.0.1:3956");
    EXPECT_EQ(port.TypeId(), TypeIds::CommPort);
    EXPECT_EQ(port.GetLocalEndPoint().ip, localhost);
    EXPECT_NE(port.GetLocalEndPoint().port, 0U);
    EXPECT_FALSE(port.IsConfigurable());

    EXPECT_TRUE(port.IsOpened());
    EXPECT_EQ(port.Close(), Status::Ok);
    EXPECT_FALSE(port.IsOpened());
    std::uint8_t byte = 0;
    EXPECT_EQ(port.SendData(&byte, 1), Status::PortNotOpen);
    EXPECT_EQ(port.RecvData(&byte, 1, 10), Status::PortNotOpen);
    EXPECT_EQ(port.Open("again"), Status::Ok);
    EXPECT_TRUE(port.IsOpened());
}

TEST(SocketPort, SilenceEndsAfterWholeSlices) {
    SocketPort port(localhost, 0, localhost, 0);
    std::uint8_t byte = 0;
    const auto elapsed = MillisecondsOf([&] { EXPECT_EQ(port.RecvData(&byte, 1, 150), Status::TimeOut); });
    EXPECT_GE(elapsed, 198);
    EXPECT_LT(elapsed, 290);
}

TEST(SocketPort, LongDatagramsReportTheirLengthAndFillOnlyTheBuffer) {
    SocketPort receiver(0, 0, localhost, 0);
    SocketPort sender(localhost, receiver.GetLocalEndPoint().port, localhost, 0);
    const std::vector<std::uint8_t> data(5000, 0x5A);
    ASSERT_EQ(sender.SendData(data.data(), data.size()), 5000);
    std::array<std::uint8_t, 16> buffer{};
    EXPECT_EQ(receiver.RecvData(buffer.data(), 8, 1000), 5000);
    EXPECT_EQ(buffer[7], 0x5A);
    EXPECT_EQ(buffer[8], 0);
    // With no partner of its own, it answers whoever spoke last.
    EXPECT_EQ(receiver.GetLastPeer().port, sender.GetLocalEndPoint().port);
    ASSERT_EQ(receiver.SendData("hello", 5), 5);
    EXPECT_EQ(sender.RecvData(buffer.data(), buffer.size(), 1000), 5);
}

TEST(SocketPort, HearsOnlyItsPartnerHoweverMuchOthersTalk) {
    SocketPort partner(0, 0, localhost, 0);
    SocketPort port(localhost, partner.GetLocalEndPoint().port, localhost, 0);
    const std::uint32_t target = port.GetLocalEndPoint().port;
    SocketPort wrongPort(localhost, target, localhost, 0);
    SocketPort wrongIp(localhost, target, other, 0);
    std::uint8_t buffer[8] = {};
    ASSERT_EQ(wrongPort.SendData("no", 2), 2);
    ASSERT_EQ(wrongIp.SendData("no", 2), 2);
    ASSERT_EQ(wrongIp.SendData("", 0), 0); // an empty datagram is nothing
    ASSERT_EQ(partner.SendTo("yes", 3, localhost, target), 3);
    EXPECT_EQ(port.RecvData(buffer, sizeof(buffer), 1000), 3);

    std::atomic<bool> stop{false};
    std::thread chatter([&] {
        while (!stop) {
            (void)wrongPort.SendData("no", 2);
            (void)wrongPort.SendData("", 0);
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    });
    const auto elapsed = MillisecondsOf([&] { EXPECT_EQ(port.RecvData(buffer, 8, 300), Status::TimeOut); });
    stop = true;
    chatter.join();
    EXPECT_GE(elapsed, 298);
    EXPECT_LT(elapsed, 550) << "chatter of others prolonged the wait";
}

TEST(SocketPort, AnyPortOfThePartnerIsHeardWhenNoneIsNamed) {
    SocketPort port(other, 0, localhost, 0);
    SocketPort first(localhost, port.GetLocalEndPoint().port, other, 0);
    SocketPort second(localhost, port.GetLocalEndPoint().port, other, 0);
    std::uint8_t buffer[8] = {};
    for (SocketPort* sender : {&first, &second}) {
        ASSERT_EQ(sender->SendData("x", 1), 1);
        EXPECT_EQ(port.RecvData(buffer, sizeof(buffer), 1000), 1);
    }
}

// Sending to a port nobody listens on draws an ICMP error; neither it nor a failed bind may end or crash
// anything but the call at hand.
TEST(SocketPort, RefusalsAndFailedBindsAreSurvived) {
    SocketPort unused(0, 0, localhost, 0);
    const std::uint32_t deadPort = unused.GetLocalEndPoint().port;
    ASSERT_EQ(unused.Close(), Status::Ok);
    SocketPort port(localhost, deadPort, localhost, 0);
    std::uint8_t buffer[8] = {};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(port.SendData("x", 1), 1);
        EXPECT_EQ(port.RecvData(buffer, sizeof(buffer), 100), Status::TimeOut);
    }
    SocketPort taken(0, 0, localhost, port.GetLocalEndPoint().port);
    EXPECT_LT(taken.SendData("x", 1), 0);
    EXPECT_LT(taken.RecvData(buffer, sizeof(buffer), 100), 0);
    SocketPort notOurs(localhost, 1, 0x08080808, 0);
    EXPECT_LT(notOurs.RecvData(buffer, sizeof(buffer), 100), 0);
}

} // namespace
} // namespace VX3
