#include "gev/net/NICEnumerator.h"

#include "core/UniqueFd.h"
#include "vx3/core/Logger.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <cstring>
#include <ifaddrs.h>
#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <system_error>

namespace VX3 {

namespace {

constexpr std::array<const char*, 6> ReservedNames = {"docker0", "lo", "rndis0", "usb0", "dummy0", "l4tbr0"};

struct HardwareAddress {
    std::uint32_t high = 0;
    std::uint32_t low = 0;
};

UniqueFd QuerySocket() {
    return UniqueFd(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
}

ifreq RequestFor(const std::string& name) {
    ifreq request{};
    name.copy(request.ifr_name, IFNAMSIZ - 1);
    return request;
}

std::uint32_t AddressOf(const sockaddr* socketAddress) {
    sockaddr_in address{};
    if (socketAddress == nullptr || socketAddress->sa_family != AF_INET)
        return 0;
    std::memcpy(&address, socketAddress, sizeof(address));
    return ntohl(address.sin_addr.s_addr);
}

// The kernel names further addresses of old make "eth0:1".
bool BelongsTo(const char* label, const std::string& name) {
    return name.compare(0, std::string::npos, label, std::strcspn(label, ":")) == 0;
}

std::vector<NET_PARAM> AddressesOf(const std::string& name) {
    std::vector<NET_PARAM> addresses;
    ifaddrs* table = nullptr;
    if (::getifaddrs(&table) != 0)
        return addresses;
    for (const ifaddrs* entry = table; entry != nullptr; entry = entry->ifa_next)
        if (const std::uint32_t ip = AddressOf(entry->ifa_addr); ip != 0 && BelongsTo(entry->ifa_name, name))
            addresses.push_back({ip, AddressOf(entry->ifa_netmask), 0});
    ::freeifaddrs(table);
    return addresses;
}

// Of every interface.
std::vector<NET_PARAM> OwnAddresses() {
    std::vector<NET_PARAM> addresses;
    ifaddrs* table = nullptr;
    if (::getifaddrs(&table) != 0)
        return addresses;
    for (const ifaddrs* entry = table; entry != nullptr; entry = entry->ifa_next)
        if (const std::uint32_t ip = AddressOf(entry->ifa_addr); ip != 0)
            addresses.push_back({ip, AddressOf(entry->ifa_netmask), 0});
    ::freeifaddrs(table);
    return addresses;
}

HardwareAddress QueryHardwareAddress(const UniqueFd& fd, const std::string& name) {
    HardwareAddress address;
    ifreq request = RequestFor(name);
    if (::ioctl(fd.Get(), SIOCGIFHWADDR, &request) != 0)
        return address;
    const char* bytes = request.ifr_hwaddr.sa_data;
    std::memcpy(&address.low, bytes, 4);
    std::memcpy(&address.high, bytes + 4, 2); // the other two bytes stay zero
    return address;
}

} // namespace

bool NICEnumerator::IsReservedIfName(const std::string& name) {
    return std::any_of(ReservedNames.begin(), ReservedNames.end(),
                       [&](const char* reserved) { return name == reserved; });
}

std::vector<std::string> NICEnumerator::GetAllIfNames() {
    std::vector<std::string> names;
    struct if_nameindex* table = ::if_nameindex();
    if (table == nullptr) {
        VxLoggerLog(LogLevel::Error, "SDK", "if_nameindex failed!: %s",
                    std::system_category().message(errno).c_str());
        return names;
    }
    for (const struct if_nameindex* entry = table; entry->if_index != 0 && entry->if_name != nullptr; ++entry)
        if (!IsReservedIfName(entry->if_name))
            names.emplace_back(entry->if_name);
    ::if_freenameindex(table);
    return names;
}

std::vector<NICInfo> NICEnumerator::EnumerateNICs() {
    std::vector<NICInfo> list;
    const std::vector<std::string> names = GetAllIfNames();
    if (names.empty())
        return list;
    const UniqueFd fd = QuerySocket();
    if (!fd)
        return list;
    for (const std::string& name : names) {
        const HardwareAddress mac = QueryHardwareAddress(fd, name);
        list.push_back({name, name, name, mac.high, mac.low});
    }
    return list;
}

NicParams NICEnumerator::NetParamEx(const std::string& name) {
    NicParams result;
    const UniqueFd fd = QuerySocket();
    if (!fd)
        return result;
    result.params = AddressesOf(name);
    if (result.params.empty())
        result.params.emplace_back();
    const HardwareAddress mac = QueryHardwareAddress(fd, name);
    result.macHigh = mac.high;
    result.macLow = mac.low;
    return result;
}

NicParams NICEnumerator::FindNicParamByAddr(std::uint32_t address) {
    const auto holds = [address](const NET_PARAM& param) {
        return address != 0 && param.mask != 0 && param.ip != 0 && ((address ^ param.ip) & param.mask) == 0;
    };
    for (const NICInfo& nic : EnumerateNICs()) {
        const NicParams found = NetParamEx(nic.id);
        if (std::any_of(found.params.begin(), found.params.end(), holds))
            return NetParamEx(nic.id);
    }
    return {};
}

std::string NICEnumerator::GetNicNameByIp(std::uint32_t address) {
    const auto owns = [address](const NET_PARAM& param) { return param.ip == address; };
    for (const std::string& name : GetAllIfNames()) {
        const std::vector<NET_PARAM> addresses = AddressesOf(name);
        if (std::any_of(addresses.begin(), addresses.end(), owns))
            return name;
    }
    return {};
}

NET_PARAM NICEnumerator::ParamToward(std::uint32_t address) {
    for (const NET_PARAM& param : FindNicParamByAddr(address).params)
        if (((address ^ param.ip) & param.mask) == 0)
            return param;
    const UniqueFd fd = QuerySocket();
    sockaddr_in end{};
    socklen_t length = sizeof(end);
    end.sin_family = AF_INET;
    end.sin_addr.s_addr = htonl(address);
    end.sin_port = htons(3956); // nothing is sent
    auto* const plain = reinterpret_cast<sockaddr*>(&end);
    if (!fd || ::connect(fd.Get(), plain, length) != 0 || ::getsockname(fd.Get(), plain, &length) != 0)
        return {};
    const std::uint32_t own = AddressOf(plain);
    for (const NET_PARAM& param : OwnAddresses())
        if (param.ip == own)
            return param;
    return {own, 0xFFFFFFFFU, 0};
}

bool NICEnumerator::IsOwnAddress(std::uint32_t address) {
    constexpr std::uint32_t LoopbackNet = 127;
    const std::vector<NET_PARAM> own = OwnAddresses();
    return address >> 24 == LoopbackNet ||
           std::any_of(own.begin(), own.end(), [&](const NET_PARAM& param) { return param.ip == address; });
}

std::uint32_t NICEnumerator::LinkSpeed(std::uint32_t address) {
    const std::string name = GetNicNameByIp(address);
    const UniqueFd fd = QuerySocket();
    ethtool_cmd settings{};
    settings.cmd = ETHTOOL_GSET;
    ifreq request = RequestFor(name);
    request.ifr_data = reinterpret_cast<char*>(&settings);
    if (name.empty() || !fd || ::ioctl(fd.Get(), SIOCETHTOOL, &request) != 0)
        return 0;
    const std::uint32_t speed = ethtool_cmd_speed(&settings);
    return speed != static_cast<std::uint32_t>(SPEED_UNKNOWN) ? speed : 0;
}

std::uint32_t NICEnumerator::PathMtu(std::uint32_t from, std::uint32_t to) {
    const UniqueFd fd = QuerySocket();
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(from);
    if (!fd || ::bind(fd.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0)
        return 0;
    address.sin_addr.s_addr = htonl(to);
    address.sin_port = htons(3956); // nothing is sent
    int mtu = 0;
    socklen_t length = sizeof(mtu);
    const bool known =
        ::connect(fd.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0 &&
        ::getsockopt(fd.Get(), IPPROTO_IP, IP_MTU, &mtu, &length) == 0;
    return known && mtu > 0 ? static_cast<std::uint32_t>(mtu) : 0;
}

} // namespace VX3
