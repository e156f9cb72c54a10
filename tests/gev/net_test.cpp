// Sockets and network interfaces.
#include "gev/net/NICEnumerator.h"
#include "gev/net/SocketPort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <thread>
#include <vector>

namespace VX3::Test {
namespace {

constexpr std::uint32_t Localhost = 0x7F000001;
constexpr std::uint32_t Other = 0x7F000063;

long long MillisecondsOf(const std::function<void()>& action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start)
        .count();
}

TEST(SocketPort, IsNamedAfterItsPartnerAndBindsAFreePort) {
    SocketPort port(0xC0A80001, 3956, Localhost, 0);
    EXPECT_EQ(port.Name(), "192.168.0.1:3956");
    EXPECT_EQ(port.TypeId(), TypeIds::CommPort);
    EXPECT_EQ(port.GetLocalEndPoint().ip, Localhost);
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
    SocketPort port(Localhost, 0, Localhost, 0);
    std::uint8_t byte = 0;
    const auto elapsed = MillisecondsOf([&] { EXPECT_EQ(port.RecvData(&byte, 1, 150), Status::TimeOut); });
    EXPECT_GE(elapsed, 198);
    EXPECT_LT(elapsed, 290);
}

TEST(SocketPort, LongDatagramsReportTheirLengthAndFillOnlyTheBuffer) {
    SocketPort receiver(0, 0, Localhost, 0);
    SocketPort sender(Localhost, receiver.GetLocalEndPoint().port, Localhost, 0);
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
    SocketPort partner(0, 0, Localhost, 0);
    SocketPort port(Localhost, partner.GetLocalEndPoint().port, Localhost, 0);
    const std::uint32_t target = port.GetLocalEndPoint().port;
    SocketPort wrongPort(Localhost, target, Localhost, 0);
    SocketPort wrongIp(Localhost, target, Other, 0);
    std::uint8_t buffer[8] = {};
    ASSERT_EQ(wrongPort.SendData("no", 2), 2);
    ASSERT_EQ(wrongIp.SendData("no", 2), 2);
    ASSERT_EQ(wrongIp.SendData("", 0), 0); // an empty datagram is nothing
    ASSERT_EQ(partner.SendTo("yes", 3, Localhost, target), 3);
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
    SocketPort port(Other, 0, Localhost, 0);
    SocketPort first(Localhost, port.GetLocalEndPoint().port, Other, 0);
    SocketPort second(Localhost, port.GetLocalEndPoint().port, Other, 0);
    std::uint8_t buffer[8] = {};
    for (SocketPort* sender : {&first, &second}) {
        ASSERT_EQ(sender->SendData("x", 1), 1);
        EXPECT_EQ(port.RecvData(buffer, sizeof(buffer), 1000), 1);
    }
}

// Sending to a port nobody listens on draws an ICMP error; neither it nor a failed bind may end or crash
// anything but the call at hand.
TEST(SocketPort, RefusalsAndFailedBindsAreSurvived) {
    SocketPort unused(0, 0, Localhost, 0);
    const std::uint32_t deadPort = unused.GetLocalEndPoint().port;
    ASSERT_EQ(unused.Close(), Status::Ok);
    SocketPort port(Localhost, deadPort, Localhost, 0);
    std::uint8_t buffer[8] = {};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(port.SendData("x", 1), 1);
        EXPECT_EQ(port.RecvData(buffer, sizeof(buffer), 100), Status::TimeOut);
    }
    SocketPort taken(0, 0, Localhost, port.GetLocalEndPoint().port);
    EXPECT_LT(taken.SendData("x", 1), 0);
    EXPECT_LT(taken.RecvData(buffer, sizeof(buffer), 100), 0);
    SocketPort notOurs(Localhost, 1, 0x08080808, 0);
    EXPECT_LT(notOurs.RecvData(buffer, sizeof(buffer), 100), 0);
}

TEST(NICEnumerator, SkipsExactlyTheReservedNames) {
    for (const char* name : {"docker0", "lo", "rndis0", "usb0", "dummy0", "l4tbr0"})
        EXPECT_TRUE(NICEnumerator::IsReservedIfName(name)) << name;
    for (const char* name : {"eth0", "docker1", "LO", "lo0", "", "usb"})
        EXPECT_FALSE(NICEnumerator::IsReservedIfName(name)) << name;
    const auto names = NICEnumerator::GetAllIfNames();
    EXPECT_EQ(std::count(names.begin(), names.end(), "lo"), 0);
}

// Another interface of the C library says of this machine what ours does; of each interface the first
// address.
TEST(NICEnumerator, AgreesWithTheSystemAboutEveryInterface) {
    const auto names = NICEnumerator::GetAllIfNames();
    const auto nics = NICEnumerator::EnumerateNICs();
    ASSERT_EQ(nics.size(), names.size());
    ifaddrs* list = nullptr;
    ASSERT_EQ(::getifaddrs(&list), 0);
    const auto address = [](const sockaddr* a) {
        return ntohl(reinterpret_cast<const sockaddr_in*>(a)->sin_addr.s_addr);
    };
    for (std::size_t i = 0; i < nics.size(); ++i) {
        EXPECT_EQ(nics[i].name, names[i]);
        EXPECT_EQ(nics[i].id, names[i]);
        const NicParams params = NICEnumerator::NetParamEx(nics[i].id);
        ASSERT_EQ(params.params.size(), 1U);
        EXPECT_EQ(params.macLow, nics[i].macLow);
        const ifaddrs* known = list;
        while (known != nullptr && (names[i] != known->ifa_name || known->ifa_addr == nullptr ||
                                    known->ifa_addr->sa_family != AF_INET))
            known = known->ifa_next;
        const NET_PARAM& param = params.params[0];
        EXPECT_EQ(param.extra, 0xFFFFFFFFU);
        EXPECT_EQ(param.ip, known == nullptr ? 0 : address(known->ifa_addr)) << names[i];
        if (known == nullptr)
            continue;
        EXPECT_EQ(param.mask, address(known->ifa_netmask));
        EXPECT_FALSE(NICEnumerator::GetNicNameByIp(param.ip).empty());
        EXPECT_FALSE(NICEnumerator::FindNicParamByAddr(param.ip ^ 1).params.empty());
    }
    ::freeifaddrs(list);
}

TEST(NICEnumerator, FindsNothingForAddressesOfNobody) {
    EXPECT_TRUE(NICEnumerator::FindNicParamByAddr(0).params.empty());
    EXPECT_EQ(NICEnumerator::FindNicParamByAddr(0).macLow, 0U);
    EXPECT_TRUE(NICEnumerator::FindNicParamByAddr(0x7F000001).params.empty()) << "loopback is not listed";
    EXPECT_TRUE(NICEnumerator::GetNicNameByIp(0xE0000001).empty());
    const NicParams none = NICEnumerator::NetParamEx("a-name-longer-than-fifteen-characters");
    ASSERT_EQ(none.params.size(), 1U);
    EXPECT_EQ(none.params[0].ip, 0U);
}

} // namespace
} // namespace VX3::Test
