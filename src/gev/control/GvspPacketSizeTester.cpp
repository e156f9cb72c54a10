#include "gev/control/GvspPacketSizeTester.h"

#include "gev/net/NICEnumerator.h"
#include "gev/net/SocketPort.h"
#include "gev/protocol/Bootstrap.h"
#include "gev/protocol/Gvsp.h"

#include <algorithm>
#include <chrono>
#include <vector>

namespace VX3 {

namespace {

constexpr std::int64_t EthernetSize = 1500;
// From the usual jumbo frame downwards; eight of them are tried at most.
constexpr std::int64_t Sizes[] = {8960, 7960, 6960, 5960, 4960, 3960, 2960, 1960, 960};
constexpr std::size_t Tries = 8;
// Paths below this carry no jumbo frames: nothing is left to be tried.
constexpr std::int64_t JumboPath = 2000;
constexpr std::chrono::milliseconds Wait{200};
constexpr std::size_t ReceiveSize = 16384;

std::vector<std::int64_t> Candidates(std::int64_t max, std::int64_t min, std::int64_t inc) {
    std::vector<std::int64_t> candidates;
    for (const std::int64_t size : Sizes) {
        const std::int64_t candidate = GvspPacketSizeTester::GetValidPacketSize(size, min, inc);
        if (candidate >= min && candidate <= max && candidates.size() < Tries)
            candidates.push_back(candidate);
    }
    return candidates;
}

void FireTestPacket(GevCmdHelper& helper, std::int64_t size) {
    (void)helper.WriteRegister(Bootstrap::StreamPacketSize, static_cast<std::uint32_t>(size) +
                                                                Bootstrap::FireTestPacket +
                                                                Bootstrap::DoNotFragment);
}

// The largest of `sizes` (in falling order) that arrives in time; 0 when none does.
std::int64_t LargestArriving(SocketPort& port, const std::vector<std::int64_t>& sizes) {
    using Clock = std::chrono::steady_clock;
    std::vector<std::uint8_t> buffer(ReceiveSize);
    std::int64_t largest = 0;
    const auto deadline = Clock::now() + Wait;
    while (largest != sizes.front()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0)
            break;
        const StatusCode received =
            port.RecvData(buffer.data(), buffer.size(), static_cast<std::uint32_t>(left));
        const std::int64_t size = received + static_cast<std::int64_t>(Gvsp::IpUdpOverhead);
        if (!Failed(received) && std::find(sizes.begin(), sizes.end(), size) != sizes.end())
            largest = std::max(largest, size);
    }
    return largest;
}

// On most paths the first one arrives, within milliseconds; else all others are tried at once.
std::int64_t Test(GevCmdHelper& helper, SocketPort& port, std::vector<std::int64_t> sizes) {
    if (sizes.empty())
        return 0;
    FireTestPacket(helper, sizes.front());
    if (LargestArriving(port, {sizes.front()}) != 0)
        return sizes.front();
    sizes.erase(sizes.begin());
    if (sizes.empty())
        return 0;
    for (const std::int64_t size : sizes)
        FireTestPacket(helper, size);
    return LargestArriving(port, sizes);
}

} // namespace

std::int64_t GvspPacketSizeTester::GetValidPacketSize(std::int64_t size, std::int64_t min, std::int64_t inc) {
    // Limits beyond any packet size come from a broken description; the arithmetic must survive them.
    constexpr std::int64_t Sane = std::int64_t{1} << 32;
    if (inc == 0 || min < -Sane || min > Sane)
        return size;
    return min + inc * ((size - min) / inc);
}

std::int64_t GvspPacketSizeTester::TestPacketSize(GevCmdHelper& helper, std::uint32_t cameraIp,
                                                  std::uint32_t hostIp, std::int64_t max, std::int64_t min,
                                                  std::int64_t inc) {
    if (max < EthernetSize)
        return max;
    if (max < 2000)
        return GetValidPacketSize(EthernetSize, min, inc);
    const std::int64_t path = NICEnumerator::PathMtu(hostIp, cameraIp);
    if (path != 0 && path < JumboPath)
        return GetValidPacketSize(std::min(path, EthernetSize), min, inc);
    SocketPort port(cameraIp, 0, hostIp, 0);
    // Writes that fail are not looked at: the test packets that do not come say the same.
    (void)helper.WriteRegister(Bootstrap::StreamDestination, hostIp);
    (void)helper.WriteRegister(Bootstrap::StreamPort, port.GetLocalEndPoint().port);

    const std::int64_t limit = path != 0 ? std::min(max, path) : max;
    const std::int64_t found = Test(helper, port, Candidates(limit, min, inc));
    const std::int64_t answer = found != 0 ? found : GetValidPacketSize(EthernetSize, min, inc);
    (void)helper.WriteRegister(Bootstrap::StreamPacketSize,
                               static_cast<std::uint32_t>(answer) + Bootstrap::DoNotFragment);
    (void)helper.WriteRegister(Bootstrap::StreamPort, 0);
    (void)helper.WriteRegister(Bootstrap::StreamDestination, 0);
    return answer;
}

} // namespace VX3
