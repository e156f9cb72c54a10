// What the stream machinery costs: frames a second of a virtual camera at frame time 0, through queue,
// delivery thread and callback, against the bare generator drawing from the same kind of pool, in the same
// run; and whether memory stays where it is over many frames.
//
//   bench_virtual [--smoke]
#include "simulated/ImageGeneratorSimple.h"
#include "simulated/SoftStream.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using namespace VX3;
using std::chrono::steady_clock;

constexpr unsigned long long PoolBytes = 64ULL << 20;

double Seconds(steady_clock::time_point since) {
    return std::chrono::duration<double>(steady_clock::now() - since).count();
}

double ResidentMiB() {
    long pages = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> pages >> resident;
    return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1 << 20);
}

using PoolMaker = std::shared_ptr<IImagePool> (*)();

std::shared_ptr<IImagePool> RecyclePool() {
    return ImagePoolFactory::CreateRecycleImagePool(PoolBytes, "bench");
}
// More slots than the stream has images in flight.
std::shared_ptr<IImagePool> RingPool() {
    constexpr unsigned int FrameBytes = 400 * 400;
    return ImagePoolFactory::CreateRingAImagePool(80ULL * FrameBytes, FrameBytes, ImageInfo::HeaderSize,
                                                  "bench");
}

// Frames a second, each frame dropped as soon as it is made.
double BareGenerator(unsigned int frames, PoolMaker newPool) {
    ImageGeneratorSimple generator;
    generator.SetFrameTime(0);
    const auto pool = newPool();
    generator.Generate(pool, nullptr);
    const auto start = steady_clock::now();
    for (unsigned int i = 0; i < frames; ++i)
        generator.Generate(pool, nullptr);
    return frames / Seconds(start);
}

struct StreamResult {
    double framesPerSecond = 0;
    std::uint64_t dropped = 0;
    double residentEarly = 0; // MiB, after a tenth of the frames
    double residentEnd = 0;
};

// Frames a second that reach the client's callback.
StreamResult Stream(unsigned int frames, PoolMaker newPool) {
    auto generator = std::make_unique<ImageGeneratorSimple>();
    generator->SetFrameTime(0);
    SoftStream stream("bench", 0, std::move(generator), nullptr);
    std::atomic<unsigned int> delivered{0};
    StreamResult result;
    const auto count = [&](std::shared_ptr<IImage>, IDevice*, unsigned int, unsigned int, void*) {
        ++delivered;
    };
    const auto start = steady_clock::now();
    if (Failed(stream.Open(4, nullptr)) || Failed(stream.Start(count, nullptr, 4, newPool())))
        return result;
    while (delivered < frames) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        if (result.residentEarly == 0 && delivered > frames / 10)
            result.residentEarly = ResidentMiB();
    }
    result.framesPerSecond = delivered / Seconds(start);
    result.residentEnd = ResidentMiB();
    stream.Stop();
    result.dropped = static_cast<const StreamAbs&>(stream).GetStatistics().droppedImages;
    stream.Close();
    return result;
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void Compare(const char* name, PoolMaker newPool, unsigned int frames, int pairs) {
    std::vector<double> ratios;
    std::vector<double> bare;
    std::vector<double> streamed;
    std::uint64_t dropped = 0;
    for (int i = 0; i < pairs; ++i) {
        bare.push_back(BareGenerator(frames, newPool));
        const StreamResult result = Stream(frames, newPool);
        streamed.push_back(result.framesPerSecond);
        dropped += result.dropped;
        ratios.push_back(result.framesPerSecond / bare.back());
    }
    const auto [least, most] = std::minmax_element(ratios.begin(), ratios.end());
    std::printf("%s, 400 x 400: generator %.0f frames/s, stream %.0f frames/s (%llu dropped), ratio %.2f "
                "(%.2f to %.2f over %d pairs)\n",
                name, Median(bare), Median(streamed), static_cast<unsigned long long>(dropped),
                Median(ratios), *least, *most, pairs);
}

} // namespace

int main(int argc, char** argv) {
    const bool smoke = argc > 1 && std::strcmp(argv[1], "--smoke") == 0;
    const unsigned int frames = smoke ? 3000 : 5000;
    const int pairs = smoke ? 1 : 15;
    Compare("ring pool", RingPool, frames, pairs);
    Compare("recycle pool", RecyclePool, frames, pairs);

    const unsigned int longRun = smoke ? 1000 : 100000;
    const StreamResult steady = Stream(longRun, RecyclePool);
    std::printf("resident over %u frames: %.1f MiB after a tenth, %.1f MiB at the end\n", longRun,
                steady.residentEarly, steady.residentEnd);
    return 0;
}
