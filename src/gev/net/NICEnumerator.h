// Lists the host's IPv4 network interfaces that can reach cameras and looks addresses up among them.
// Stateless: every call asks the kernel afresh, from any thread. Nothing here throws for a refused query;
// the answer is then empty or partly filled.
#pragma once

#include "vx3/gev/NetParam.h"

#include <cstdint>
#include <string>
#include <vector>

namespace VX3 {

class NICEnumerator {
public:
    // True for the interfaces that are never listed: loopback, USB gadgets, containers.
    static bool IsReservedIfName(const std::string& name);
    // In the kernel's order.
    static std::vector<std::string> GetAllIfNames();
    static std::vector<NICInfo> EnumerateNICs();
    // All IPv4 addresses of the interface, the kernel's primary one first; one entry with ip 0 when it has
    // none.
    static NicParams NetParamEx(const std::string& name);
    // The first listed interface whose subnet holds `address`; empty when none does or address is 0.
    static NicParams FindNicParamByAddr(std::uint32_t address);
    // The first listed interface that owns `address`; empty when none does.
    static std::string GetNicNameByIp(std::uint32_t address);
    // The address of this host that `address` is reached from, with its mask: of the listed interface whose
    // subnet holds it, else as the kernel routes, loopback included. ip 0 when there is no way there.
    static NET_PARAM ParamToward(std::uint32_t address);
    // True for an address of this host's own, loopback included.
    static bool IsOwnAddress(std::uint32_t address);
    // Mbit/s of the interface that owns `address`; 0 when it does not tell.
    static std::uint32_t LinkSpeed(std::uint32_t address);
    // Largest IP packet, in bytes, that leaves `from` towards `to` in one piece, as far as the kernel knows;
    // 0 when it does not.
    static std::uint32_t PathMtu(std::uint32_t from, std::uint32_t to);
};

} // namespace VX3
