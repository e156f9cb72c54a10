// Reception end to end, against a bare recvfrom loop with the same sender in the same run: the highest rate
// without loss, CPU seconds a gigabyte, and whether memory stays where it is.
//
//   unshare -rn bench_gvsp_receive [--smoke] [--mtu 1500|9000]   (scripts/bench_receive.sh runs both)
//   bench_gvsp_receive --loopback ...                            without namespaces
#include "CameraProcess.h"

#include "gev/receive/GvspReceiver.h"
#include "vx3/image/IImagePool.h"

#include <atomic>
#include <cstring>
#include <fstream>
#include <sys/resource.h>
#include <sys/socket.h>
#include <thread>

using namespace VX3;
using namespace VX3::Bench;

namespace {

struct Method {
    const char* name;
    bool floor;
    ReceiveMethod method;
};

// Results go here; the library's own log lines about lost packets would drown them.
std::FILE* g_out = stdout;

constexpr Method Methods[] = {{"bare recvfrom", true, ReceiveMethod::RecvFrom},
                              {"recvfrom", false, ReceiveMethod::RecvFrom},
                              {"recvmmsg", false, ReceiveMethod::RecvMmsg},
                              {"gro", false, ReceiveMethod::Gro}};

struct Result {
    bool lossless = false;
    double gigabits = 0; // as really sent
    double cpuPerGigabyte = 0;
};

double CpuSeconds() {
    rusage usage{};
    (void)::getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

Result Judge(const SendReport& sent, bool lossless, double cpu) {
    Result result;
    result.lossless = lossless;
    result.gigabits = static_cast<double>(sent.bytes) * 8e-9 / sent.seconds;
    result.cpuPerGigabyte = cpu / (static_cast<double>(sent.bytes) * 1e-9);
    return result;
}

// The kernel's own floor: one blocking recvfrom a datagram into one buffer, nothing done with it.
Result RunFloor(const CameraProcess& camera, SendOrder order) {
    StreamSocket socket;
    if (Failed(socket.Open(camera.Host())))
        return {};
    const timeval wait{0, 200000};
    (void)::setsockopt(socket.Descriptor(), SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof(wait));
    order.port = socket.Port();
    std::atomic<bool> done{false};
    std::uint64_t packets = 0;
    const double before = CpuSeconds();
    std::thread thread([&] {
        std::vector<std::uint8_t> buffer(16384);
        while (true)
            if (::recvfrom(socket.Descriptor(), buffer.data(), buffer.size(), 0, nullptr, nullptr) >= 0)
                ++packets;
            else if (done)
                return;
    });
    camera.Order(order);
    const SendReport sent = camera.Report();
    done = true;
    thread.join();
    return Judge(sent, packets == sent.packets, CpuSeconds() - before);
}

Result RunReceiver(const CameraProcess& camera, SendOrder order, ReceiveMethod method) {
    GvspReceiver::Options options;
    options.method = method;
    GvspReceiver receiver(options);
    GevStreamParam param;
    param.host.ip = camera.Host();
    param.camera.ip = camera.Camera();
    param.packetSize = order.packetSize;
    param.bufferSize = order.width * order.height;
    param.name = "bench";
    static const auto pool = ImagePoolFactory::CreateRecycleImagePool(1ULL << 30, "bench");
    const StatusCode port = receiver.StartListen(
        param, pool, [](std::unique_ptr<IImage>&&, unsigned int) {}, 0);
    if (Failed(port))
        return {};
    (void)receiver.WaitUntilReady(std::chrono::seconds(5));
    order.port = static_cast<std::uint32_t>(port);
    const double before = CpuSeconds();
    camera.Order(order);
    const SendReport sent = camera.Report();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(300);
    const auto counts = [&] { return receiver.GetStatistics()->Snapshot(); };
    while (counts().blocks < order.frames && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    const double cpu = CpuSeconds() - before;
    (void)receiver.StopListen();
    return Judge(sent, counts().blocks == order.frames && counts().incompleteBlocks == 0, cpu);
}

Result Run(const CameraProcess& camera, const SendOrder& order, const Method& method) {
    return method.floor ? RunFloor(camera, order) : RunReceiver(camera, order, method.method);
}

// The highest rate without loss, by halving; each rate may try twice.
double HighestLossless(const CameraProcess& camera, SendOrder order, const Method& method, double top,
                       unsigned steps) {
    double good = 0, bad = top;
    for (unsigned step = 0; step < steps; ++step) {
        order.gigabits = (good + bad) / 2;
        Result result = Run(camera, order, method);
        if (!result.lossless)
            result = Run(camera, order, method);
        if (result.lossless && result.gigabits > 0.9 * order.gigabits)
            good = std::max(good, result.gigabits);
        if (result.lossless && result.gigabits <= 0.9 * order.gigabits)
            return std::max(good, result.gigabits); // the sender's limit
        (result.lossless ? good : bad) = order.gigabits;
    }
    return good;
}

long ResidentKib() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.compare(0, 6, "VmRSS:") == 0)
            return std::atol(line.c_str() + 6);
    return 0;
}

bool MemorySteady(const CameraProcess& camera, unsigned frames, double gigabits) {
    SendOrder order;
    order.destinationIp = camera.Host();
    order.width = 1024;
    order.height = 1024;
    order.gigabits = gigabits;
    order.frames = std::max(frames / 10, 1U);
    (void)RunReceiver(camera, order, ReceiveMethod::Best);
    const long before = ResidentKib();
    order.frames = frames;
    const Result result = RunReceiver(camera, order, ReceiveMethod::Best);
    const long after = ResidentKib();
    std::fprintf(g_out, "memory: %ld KiB before, %ld KiB after %u frames of 1 MiB (%s)\n", before, after,
                 frames, result.lossless ? "all complete" : "some incomplete");
    return after - before < 4096;
}

bool Compare(unsigned mtu, bool smoke) {
    const CameraProcess camera(mtu);
    if (!camera.Ready()) {
        std::fprintf(
            g_out, "no network namespace for the camera here: run under `unshare -rn`, or with --loopback\n");
        return false;
    }
    SendOrder order;
    order.destinationIp = camera.Host();
    order.packetSize = mtu == 0 ? 1500 : mtu;
    order.frames = smoke ? 20 : 150;
    std::fprintf(g_out, "packets of %u, frames of 1920 x 1200, %s\n", order.packetSize,
                 mtu == 0 ? "loopback" : "veth pair");
    double rates[4] = {}, cpu[4] = {};
    const unsigned rounds = smoke ? 1 : 2;
    for (unsigned round = 0; round < rounds; ++round)
        for (std::size_t i = 0; i < 4; ++i)
            rates[i] = std::max(
                rates[i], HighestLossless(camera, order, Methods[i], mtu >= 9000 ? 40 : 24, smoke ? 3 : 6));
    order.gigabits = std::max(0.5, 0.6 * rates[0]);
    for (std::size_t i = 0; i < 4; ++i) {
        double sum[5];
        const unsigned pairs = smoke ? 1 : 5;
        for (unsigned n = 0; n < pairs; ++n)
            sum[n] = Run(camera, order, Methods[i]).cpuPerGigabyte;
        std::sort(sum, sum + pairs);
        cpu[i] = sum[pairs / 2];
    }
    for (std::size_t i = 0; i < 4; ++i)
        std::fprintf(g_out,
                     "  %-14s lossless to %5.2f Gbit/s (%.2f of the floor), %.3f CPU s/GB at %.1f Gbit/s "
                     "(%.2f of the floor)\n",
                     Methods[i].name, rates[i], rates[0] > 0 ? rates[i] / rates[0] : 0, cpu[i],
                     order.gigabits, cpu[0] > 0 ? cpu[i] / cpu[0] : 0);
    return MemorySteady(camera, smoke ? 100 : 10000, std::max(0.5, 0.5 * rates[0]));
}

} // namespace

int main(int argc, char** argv) {
    bool smoke = false, loopback = false;
    unsigned only = 0;
    for (int i = 1; i < argc; ++i) {
        smoke = smoke || std::strcmp(argv[i], "--smoke") == 0;
        loopback = loopback || std::strcmp(argv[i], "--loopback") == 0;
        if (std::strcmp(argv[i], "--mtu") == 0 && i + 1 < argc)
            only = static_cast<unsigned>(std::atoi(argv[++i]));
    }
    g_out = ::fdopen(::dup(STDOUT_FILENO), "w");
    if (g_out == nullptr || std::freopen("/dev/null", "w", stdout) == nullptr)
        return 2;
    std::setvbuf(g_out, nullptr, _IOLBF, 0);
    if (loopback)
        return Compare(0, smoke) ? 0 : 1;
    bool good = true;
    for (const unsigned mtu : {1500U, 9000U})
        if (only == 0 || only == mtu)
            good = Compare(mtu, smoke) && good;
    return good ? 0 : 1;
}
