#include "gev/control/GvspPacketSizeTester.h"

#include "gev/net/SocketPort.h"
#include "gev/protocol/Bootstrap.h"
#include "gev/protocol/Gvsp.h"

#include <vector>

namespace VX3 {

namespace {

constexpr std::int64_t ethernetSize = 1500;
constexpr std::int64_t jumboSize = 8960;
constexpr std::int64_t step = 1000;
constexpr int tries = 8;
constexpr std::uint32_t waitMs = 200;
constexpr std::size_t receiveSize = 16384;

bool TestPacketArrives(GevCmdHelper& helper, SocketPort& port, std::vector<std::uint8_t>& buffer,
                       std::int64_t size) {
    (void)helper.WriteRegister(Bootstrap::StreamPacketSize, static_cast<std::uint32_t>(size) +
                                                                Bootstrap::FireTestPacket +
                                                                Bootstrap::DoNotFragment);
    return port.RecvData(buffer.data(), buffer.size(), waitMs) ==
           size - static_cast<std::int64_t>(Gvsp::IpUdpOverhead);
}

// 0 when no test packet arrived.
std::int64_t LargestArriving(GevCmdHelper& helper, SocketPort& port, std::int64_t max, std::int64_t min,
                             std::int64_t inc) {
    const auto candidateAt = [&](std::int64_t start) {
        return GvspPacketSizeTester::GetValidPacketSize(start, min, inc);
    };
    std::int64_t start = jumboSize;
    while (start > 0 && candidateAt(start) > max)
        start -= step;
    std::vector<std::uint8_t> buffer(receiveSize);
    for (int i = 0; i < tries && start > 0; ++i, start -= step) {
        const std::int64_t candidate = candidateAt(start);
        if (candidate < min || candidate > max)
            continue;
        if (TestPacketArrives(helper, port, buffer, candidate))
            return candidate;
    }
    return 0;
}

} // namespace

std::int64_t GvspPacketSizeTester::GetValidPacketSize(std::int64_t size, std::int64_t min, std::int64_t inc) {
    // Limits beyond any packet size come from a broken description; the arithmetic must survive them.
    constexpr std::int64_t sane = std::int64_t{1} << 32;
    if (inc == 0 || min < -sane || min > sane)
        return size;
    return min + inc * ((size - min) / inc);
}

std::int64_t GvspPacketSizeTester::TestPacketSize(GevCmdHelper& helper, std::uint32_t cameraIp,
                                                  std::uint32_t hostIp, std::int64_t max, std::int64_t min,
                                                  std::int64_t inc) {
    if (max < ethernetSize)
        return max;
    if (max < 2000)
        return GetValidPacketSize(ethernetSize, min, inc);
    SocketPort port(cameraIp, 0, hostIp, 0);
    // Writes that fail are not looked at: the test packets that do not come say the same.
    (void)helper.WriteRegister(Bootstrap::StreamDestination, hostIp);
    (void)helper.WriteRegister(Bootstrap::StreamPort, port.GetLocalEndPoint().port);

    const std::int64_t found = LargestArriving(helper, port, max, min, inc);
    const std::int64_t answer = found != 0 ? found : GetValidPacketSize(ethernetSize, min, inc);
    (void)helper.WriteRegister(Bootstrap::StreamPacketSize,
                               static_cast<std::uint32_t>(answer) + Bootstrap::DoNotFragment);
    (void)helper.WriteRegister(Bootstrap::StreamPort, 0);
    (void)helper.WriteRegister(Bootstrap::StreamDestination, 0);
    return answer;
}

} // namespace VX3
