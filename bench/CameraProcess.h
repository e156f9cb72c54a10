// A child process with a simulated camera that sends as ordered, in a network namespace of its own joined to
// ours by a veth pair (needs the rights that `unshare -rn` gives) or, where asked, on loopback.
#pragma once

#include "gev/protocol/Bootstrap.h"
#include "vx3/simulated/Camera.h"

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sched.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace VX3 {
namespace Bench {

struct SendOrder {
    std::uint32_t destinationIp = 0; // host order
    std::uint32_t port = 0;
    std::uint32_t packetSize = 1500;
    std::uint32_t width = 1920;
    std::uint32_t height = 1200;
    std::uint32_t frames = 0; // 0: end
    double gigabits = 0;      // a second; 0: flat out
    // Faults of first sendings; see Simulated::StreamFaults.
    double loss = 0;       // chance of a packet
    double resendLoss = 0; // chance of a packet sent again
    double bursts = 0;     // chance of a packet to begin a burst of losses ...
    unsigned burst = 0;    // ... of so many
    double duplicates = 0;
    unsigned reorder = 0; // places
};

struct SendReport {
    std::uint64_t packets = 0;
    std::uint64_t bytes = 0; // payload
    double seconds = 0;
    std::uint64_t dropped = 0; // first sendings
    std::uint64_t asked = 0;   // packets
    std::uint64_t resent = 0;
};

inline SendReport Send(Simulated::Camera& camera, const SendOrder& order) {
    (void)camera.SetRegister(Simulated::CameraRegister::Width, order.width);
    (void)camera.SetRegister(Simulated::CameraRegister::Height, order.height);
    (void)camera.SetRegister(Bootstrap::StreamPacketSize, order.packetSize);
    Simulated::StreamScript script;
    script.frames = order.frames;
    script.bytesPerSecond = order.gigabits * 1e9 / 8;
    script.busyPacing = true; // to the microsecond: this process has nothing else to do
    script.movingPicture = false;
    script.dropProbability = order.loss;
    script.resendDropProbability = order.resendLoss;
    script.burstProbability = order.bursts;
    script.burstPackets = order.burst;
    script.duplicateProbability = order.duplicates;
    script.reorderWindow = order.reorder;
    (void)camera.SetStreamScript(script);
    (void)camera.StartStream({order.destinationIp, order.port});
    (void)camera.WaitStreamDone(std::chrono::minutes(10));
    const Simulated::StreamCounts counts = camera.Counts();
    return {counts.packets,          counts.bytes,        counts.seconds, counts.dropped,
            counts.packetsRequested, counts.packetsResent};
}

// The camera's process: obeys until an order of 0 frames or a closed pipe.
inline void ServeCamera(std::uint32_t ip, int orders, int reports) {
    Simulated::CameraConfig config;
    config.ip = ip;
    Simulated::Camera camera(config);
    if (Failed(camera.Start()))
        return;
    SendOrder order;
    while (::read(orders, &order, sizeof(order)) == sizeof(order) && order.frames != 0) {
        const SendReport report = Send(camera, order);
        if (::write(reports, &report, sizeof(report)) != sizeof(report))
            return;
    }
}

class CameraProcess {
public:
    static constexpr std::uint32_t HostIp = 0x0A4D0001; // 10.77.0.1
    static constexpr std::uint32_t CameraIp = 0x0A4D0002;

    // mtu 0: loopback.
    explicit CameraProcess(unsigned mtu) : loopback_(mtu == 0) {
        int orders[2], reports[2];
        if (::pipe(orders) != 0 || ::pipe(reports) != 0)
            return;
        child_ = ::fork();
        if (child_ == 0) {
            ::close(orders[1]);
            ::close(reports[0]);
            char byte = !loopback_ && ::unshare(CLONE_NEWNET) != 0 ? 'n' : 'y';
            (void)!::write(reports[1], &byte, 1);
            if (byte == 'y' && ::read(orders[0], &byte, 1) == 1) { // our end of the pair is here
                if (!loopback_)
                    (void)Sh("ip link set vx3cam mtu " + std::to_string(mtu) +
                             " && ip addr add 10.77.0.2/24 dev vx3cam && ip link set vx3cam up");
                byte = 'y';
                (void)!::write(reports[1], &byte, 1);
                ServeCamera(Camera(), orders[0], reports[1]);
            }
            ::_exit(0);
        }
        ::close(orders[0]);
        ::close(reports[1]);
        orders_ = orders[1];
        reports_ = reports[0];
        ready_ = Join(mtu);
    }
    ~CameraProcess() {
        ::close(orders_);
        ::close(reports_);
        int status = 0;
        (void)::waitpid(child_, &status, 0);
        if (ready_ && !loopback_)
            (void)Sh("ip link del vx3host 2>/dev/null"); // unless it went with its peer
    }
    CameraProcess(const CameraProcess&) = delete;
    CameraProcess& operator=(const CameraProcess&) = delete;

    bool Ready() const { return ready_; }
    std::uint32_t Host() const { return loopback_ ? 0x7F000001 : HostIp; }
    std::uint32_t Camera() const { return loopback_ ? 0x7F000001 : CameraIp; }
    void Order(const SendOrder& order) const { (void)!::write(orders_, &order, sizeof(order)); }
    SendReport Report() const {
        SendReport report;
        if (::read(reports_, &report, sizeof(report)) != sizeof(report))
            report = {};
        return report;
    }

private:
    static bool Sh(const std::string& command) { return std::system(command.c_str()) == 0; }

    bool Join(unsigned mtu) {
        char byte = 'n';
        if (::read(reports_, &byte, 1) != 1 || byte != 'y')
            return false;
        if (!loopback_ && !Sh("ip link add vx3host type veth peer name vx3cam && ip link set vx3cam netns " +
                              std::to_string(child_) + " && ip link set vx3host mtu " + std::to_string(mtu) +
                              " && ip addr add 10.77.0.1/24 dev vx3host && ip link set vx3host up"))
            return false;
        (void)!::write(orders_, &byte, 1);
        return ::read(reports_, &byte, 1) == 1;
    }

    const bool loopback_;
    bool ready_ = false;
    pid_t child_ = -1;
    int orders_ = -1;
    int reports_ = -1;
};

} // namespace Bench
} // namespace VX3
