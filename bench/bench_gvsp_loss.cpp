// How many frames arrive whole when packets are lost, by packet size, rate, loss and socket buffer, against
// the same receiver without asking for anything again, in the same run.
//
//   unshare -rn bench_gvsp_loss [--smoke] [--mtu M] [--rate GBIT] [--loss P] [--buffer BYTES] [--frames N]
//                               [--burst PACKETS] [--duplicates P] [--reorder PLACES] [--resend-loss P]
//                               [--runs N]
//   Without --mtu, --rate, --loss or --buffer all of the table; --rate 0 is flat out, --buffer 0 forced.
#include "CameraProcess.h"

#include "gev/receive/GvspReceiver.h"
#include "vx3/image/IImagePool.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <optional>
#include <thread>
#include <vector>

using namespace VX3;
using namespace VX3::Bench;

namespace {

// Results go here; the library's own log lines about lost packets would drown them.
std::FILE* g_out = stdout;

struct Cell {
    SendOrder order;
    std::size_t buffer = 0; // of the socket, as the kernel grants it; 0: as much as may be
};

struct Outcome {
    double whole = 0; // of the frames sent
    double wholeGigabits = 0;
    SendReport sent;
    Statistics counts;
};

Outcome Run(const CameraProcess& camera, const Cell& cell, bool resends) {
    GvspReceiver::Options options;
    options.socketBytes = cell.buffer;
    GvspReceiver receiver(options);
    GevStreamParam param;
    param.host.ip = camera.Host();
    param.camera.ip = camera.Camera();
    param.packetSize = cell.order.packetSize;
    param.bufferSize = cell.order.width * cell.order.height;
    param.resendSupported = resends ? 1 : 0;
    param.name = "bench";
    static const auto pool = ImagePoolFactory::CreateRecycleImagePool(1ULL << 30, "bench");
    std::atomic<std::uint64_t> whole{0}, all{0};
    const auto count = [&](std::unique_ptr<IImage>&& image, unsigned int) {
        whole += image->GetImageInfo()->lostPackets == 0;
        ++all;
    };
    Outcome outcome;
    const StatusCode port = receiver.StartListen(param, pool, count, 0);
    if (Failed(port))
        return outcome;
    (void)receiver.WaitUntilReady(std::chrono::seconds(5));
    SendOrder order = cell.order;
    order.port = static_cast<std::uint32_t>(port);
    camera.Order(order);
    outcome.sent = camera.Report();
    for (std::uint64_t before = ~0ULL; before != all;) { // until nothing more comes
        before = all;
        std::this_thread::sleep_for(std::chrono::milliseconds(400));
    }
    (void)receiver.StopListen();
    outcome.counts = receiver.GetStatistics()->Snapshot();
    outcome.whole = static_cast<double>(whole) / order.frames;
    outcome.wholeGigabits =
        static_cast<double>(whole) * order.width * order.height * 8e-9 / outcome.sent.seconds;
    return outcome;
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void Compare(const CameraProcess& camera, const Cell& cell, unsigned runs) {
    std::vector<double> with, without, gigabits;
    Outcome last;
    for (unsigned run = 0; run < runs; ++run) {
        last = Run(camera, cell, true);
        with.push_back(last.whole);
        gigabits.push_back(last.wholeGigabits);
        without.push_back(Run(camera, cell, false).whole);
    }
    const double rate = static_cast<double>(last.sent.bytes) * 8e-9 / last.sent.seconds;
    std::fprintf(
        g_out,
        "%5u  %5.1f Gbit/s  loss %5.3f  buffer %8zu  whole %.3f (%.3f .. %.3f, %5.2f Gbit/s)  without "
        "resends %.3f  lost %llu asked %llu resent %llu  left out %llu\n",
        cell.order.packetSize, rate, cell.order.loss, cell.buffer, Median(with),
        *std::min_element(with.begin(), with.end()), *std::max_element(with.begin(), with.end()),
        Median(gigabits), Median(without), static_cast<unsigned long long>(last.sent.dropped),
        static_cast<unsigned long long>(last.sent.asked), static_cast<unsigned long long>(last.sent.resent),
        static_cast<unsigned long long>(last.counts.leftOutBlocks));
}

struct Wanted {
    std::vector<unsigned> mtus{1500, 9000};
    std::vector<double> rates{4, 8, 0};
    std::vector<double> losses{0.001, 0.01, 0.05};
    std::vector<std::size_t> buffers{425984, 8388608, 0}; // the system's default, 4 MiB doubled, forced
    unsigned frames = 1500;
    unsigned runs = 3;
    SendOrder faults;
};

bool Parse(int argc, char** argv, Wanted& wanted) {
    for (int i = 1; i < argc; ++i) {
        const std::string option = argv[i];
        if (option == "--smoke") {
            wanted = {{1500}, {2}, {0.01}, {0}, 40, 1, {}};
            continue;
        }
        if (++i == argc)
            return false;
        const double value = std::atof(argv[i]);
        const auto number = static_cast<unsigned>(value);
        if (option == "--mtu")
            wanted.mtus = {number};
        else if (option == "--rate")
            wanted.rates = {value};
        else if (option == "--loss")
            wanted.losses = {value};
        else if (option == "--buffer")
            wanted.buffers = {number};
        else if (option == "--frames")
            wanted.frames = number;
        else if (option == "--runs")
            wanted.runs = std::max(number, 1U);
        else if (option == "--burst")
            wanted.faults.burst = number;
        else if (option == "--duplicates")
            wanted.faults.duplicates = value;
        else if (option == "--reorder")
            wanted.faults.reorder = number;
        else if (option == "--resend-loss")
            wanted.faults.resendLoss = value;
        else
            return false;
    }
    return true;
}

bool RunTable(unsigned mtu, const Wanted& wanted) {
    const CameraProcess camera(mtu);
    if (!camera.Ready()) {
        std::fprintf(g_out, "no network namespace for the camera here: run under `unshare -rn`\n");
        return false;
    }
    for (const double rate : wanted.rates)
        for (const std::size_t buffer : wanted.buffers)
            for (const double loss : wanted.losses) {
                Cell cell{wanted.faults, buffer};
                cell.order.destinationIp = camera.Host();
                cell.order.packetSize = mtu;
                cell.order.frames = wanted.frames;
                cell.order.gigabits = rate;
                if (wanted.faults.burst != 0)
                    cell.order.bursts = loss / wanted.faults.burst;
                else
                    cell.order.loss = loss;
                Compare(camera, cell, wanted.runs);
            }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    Wanted wanted;
    if (!Parse(argc, argv, wanted)) {
        std::fprintf(stderr, "see the head of bench_gvsp_loss.cpp for the options\n");
        return 2;
    }
    g_out = ::fdopen(::dup(STDOUT_FILENO), "w");
    if (g_out == nullptr || std::freopen("/dev/null", "w", stdout) == nullptr ||
        std::freopen("/dev/null", "w", stderr) == nullptr)
        return 2;
    std::setvbuf(g_out, nullptr, _IOLBF, 0);
    bool good = true;
    for (const unsigned mtu : wanted.mtus)
        good = RunTable(mtu, wanted) && good;
    return good ? 0 : 1;
}
