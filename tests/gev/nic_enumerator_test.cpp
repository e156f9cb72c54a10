#include "gev/net/NICEnumerator.h"

#include <algorithm>
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <ifaddrs.h>
#include <map>
#include <net/if.h>
#include <netinet/in.h>

namespace VX3 {
namespace {

struct Known {
    std::uint32_t ip;
    std::uint32_t mask;
};

// What another interface of the C library says of this machine; the first address of each interface.
std::map<std::string, Known> KnownAddresses() {
    std::map<std::string, Known> known;
    ifaddrs* list = nullptr;
    if (::getifaddrs(&list) != 0)
        return known;
    const auto address = [](const sockaddr* a) {
        return ntohl(reinterpret_cast<const sockaddr_in*>(a)->sin_addr.s_addr);
    };
    for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next)
        if (entry->ifa_addr != nullptr && entry->ifa_addr->sa_family == AF_INET)
            known.emplace(entry->ifa_name, Known{address(entry->ifa_addr), address(entry->ifa_netmask)});
    ::freeifaddrs(list);
    return known;
}

TEST(NICEnumerator, SkipsExactlyTheReservedNames) {
    for (const char* name : {"docker0", "lo", "rndis0", "usb0", "dummy0", "l4tbr0"})
        EXPECT_TRUE(NICEnumerator::IsReservedIfName(name)) << name;
    for (const char* name : {"eth0", "docker1", "LO", "lo0", "", "usb"})
        EXPECT_FALSE(NICEnumerator::IsReservedIfName(name)) << name;
    const auto names = NICEnumerator::GetAllIfNames();
    EXPECT_EQ(std::count(names.begin(), names.end(), "lo"), 0);
}

TEST(NICEnumerator, AgreesWithTheSystemAboutEveryInterface) {
    const auto known = KnownAddresses();
    const auto names = NICEnumerator::GetAllIfNames();
    const auto nics = NICEnumerator::EnumerateNICs();
    ASSERT_EQ(nics.size(), names.size());
    for (std::size_t i = 0; i < nics.size(); ++i) {
        EXPECT_EQ(nics[i].name, names[i]);
        EXPECT_EQ(nics[i].id, names[i]);
        const NicParams params = NICEnumerator::NetParamEx(nics[i].id);
        ASSERT_EQ(params.params.size(), 1U);
        EXPECT_EQ(params.macLow, nics[i].macLow);
        EXPECT_EQ(params.params[0].extra, 0xFFFFFFFFU);
        const auto address = known.find(names[i]);
        EXPECT_EQ(params.params[0].ip, address == known.end() ? 0 : address->second.ip) << names[i];
        if (address == known.end())
            continue;
        EXPECT_EQ(params.params[0].mask, address->second.mask);
        EXPECT_FALSE(NICEnumerator::GetNicNameByIp(address->second.ip).empty());
        EXPECT_FALSE(NICEnumerator::FindNicParamByAddr(address->second.ip ^ 1).params.empty());
    }
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
} // namespace VX3
