#include "gev/net/NICEnumerator.h"

#include "core/UniqueFd.h"
#include "vx3/core/Logger.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstring>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace VX3 {

namespace {

constexpr std::array<const char*, 6> reservedNames = {"docker0", "lo", "rndis0", "usb0", "dummy0", "l4tbr0"};

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

bool QueryAddress(const UniqueFd& fd, const std::string& name, unsigned long what, std::uint32_t& address) {
    ifreq request = RequestFor(name);
    if (::ioctl(fd.Get(), what, &request) != 0)
        return false;
    sockaddr_in answer{};
    std::memcpy(&answer, &request.ifr_addr, sizeof(answer)); // the mask lies in the same place
    address = ntohl(answer.sin_addr.s_addr);
    return true;
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
    return std::any_of(reservedNames.begin(), reservedNames.end(),
                       [&](const char* reserved) { return name == reserved; });
}

std::vector<std::string> NICEnumerator::GetAllIfNames() {
    std::vector<std::string> names;
    struct if_nameindex* table = ::if_nameindex();
    if (table == nullptr) {
        VxLoggerLog(LogLevel::Error, "SDK", "if_nameindex failed!");
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
    NET_PARAM param;
    (void)QueryAddress(fd, name, SIOCGIFADDR, param.ip);
    (void)QueryAddress(fd, name, SIOCGIFNETMASK, param.mask);
    result.params.push_back(param);
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
    const std::vector<std::string> names = GetAllIfNames();
    const UniqueFd fd = QuerySocket();
    if (!fd)
        return {};
    for (const std::string& name : names) {
        std::uint32_t own = 0;
        if (QueryAddress(fd, name, SIOCGIFADDR, own) && own == address)
            return name;
    }
    return {};
}

} // namespace VX3
