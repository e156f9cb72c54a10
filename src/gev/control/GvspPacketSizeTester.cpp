#include "gev/control/GvspPacketSizeTester.h"

#include "gev/net/SocketPort.h"
#include "gev/protocol/Bootstrap.h"
#include "gev/protocol/Gvsp.h"

#include <vector>

namespace VX3 {

namespace {

constexpr std::int64_t EthernetSize = 1500;
// From the usual jumbo frame downwards; eight of them are tried at most.
constexpr std::int64_t Sizes[] = {8960, 7960, 6960, 5960, 4960, 3960, 2960, 1960, 960};
constexpr int Tries = 8;
constexpr std::uint32_t WaitMs = 200;
constexpr std::size_t ReceiveSize = 16384;

bool TestPacketArrives(GevCmdHelper& helper, SocketPort& port, std::vector<std::uint8_t>& buffer,
                       std::int64_t size) {
    (void)helper.WriteRegister(Bootstrap::StreamPacketSize, static_cast<std::uint32_t>(size) +
                                                                Bootstrap::FireTestPacket +
                                                                Bootstrap::DoNotFragment);
    return port.RecvData(buffer.data(), buffer.size(), WaitMs) ==
           size - static_cast<std::int64_t>(Gvsp::IpUdpOverhead);
}

// 0 when no test packet arrived.
std::int64_t LargestArriving(GevCmdHelper& helper, SocketPort& port, std::int64_t max, std::int64_t min,
                             std::int64_t inc) {
    std::vector<std::uint8_t> buffer(ReceiveSize);
    int tried = 0;
    for (const std::int64_t size : Sizes) {
        const std::int64_t candidate = GvspPacketSizeTester::GetValidPacketSize(size, min, inc);
        if (candidate < min || candidate > max)
            continue;
        if (TestPacketArrives(helper, port, buffer, candidate))
            return candidate;
        if (++tried == Tries)
            break;
    }
    return 0;
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
    SocketPort port(cameraIp, 0, hostIp, 0);
    // Writes that fail are not looked at: the test packets that do not come say the same.
    (void)helper.WriteRegister(Bootstrap::StreamDestination, hostIp);
    (void)helper.WriteRegister(Bootstrap::StreamPort, port.GetLocalEndPoint().port);

    const std::int64_t found = LargestArriving(helper, port, max, min, inc);
    const std::int64_t answer = found != 0 ? found : GetValidPacketSize(EthernetSize, min, inc);
    (void)helper.WriteRegister(Bootstrap::StreamPacketSize,
                               static_cast<std::uint32_t>(answer) + Bootstrap::DoNotFragment);
    (void)helper.WriteRegister(Bootstrap::StreamPort, 0);
    (void)helper.WriteRegister(Bootstrap::StreamDestination, 0);
    return answer;
}

} // namespace VX3
