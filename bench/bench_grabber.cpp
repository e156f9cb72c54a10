// What a stream of the frame grabber costs beyond reading: frames of 25 MB in 3 segments from a card made of
// files, against bare reads of the same bytes into the same kind of images, in the same run; how long it
// takes from the last interrupt of a frame to the client's callback; what a segment allocates.
//
//   bench_grabber [--smoke]
#include "grabber/KdInterfaceDev.h"
#include "grabber/KdManager.h"
#include "support/CountingAllocator.h"
#include "support/GrabberCard.h"
#include "support/TempDir.h"
#include "vx3/core/LastFailure.h"
#include "vx3/genicam/IConfigurer.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using namespace VX3;
using Clock = std::chrono::steady_clock;
using Test::GrabberCard;

constexpr std::uint32_t Width = 5120;
constexpr std::uint32_t Height = 4884;
constexpr std::uint32_t FrameBytes = Width * Height; // 25 MB
constexpr std::uint32_t Segments = 3;

double Seconds(Clock::duration time) {
    return std::chrono::duration<double>(time).count();
}

struct Result {
    double framesPerSecond = 0;
    std::uint64_t delivered = 0;
    std::uint64_t dropped = 0;
    std::uint64_t gap = 0;
    double allocationsPerFrame = 0;
    std::vector<double> latencies; // seconds
};

class Card {
public:
    Card() : card_(root_.Path(), 0, FrameBytes), manager_("bench", root_.Path()) {
        (void)manager_.EnumDevices();
        interface_ = manager_.GetDevice(0, IntfDevType::All);
        frame_ = dynamic_cast<KdInterfaceDev&>(*interface_).EnumSubDevices(0).front();
        if (Failed(frame_->Connect()) || frame_->GetConfigurer() == nullptr)
            std::abort();
        for (const auto& [name, value] : {std::pair<const char*, unsigned int>{"Width", Width},
                                          {"Height", Height},
                                          {"PixelFormat", Mono8}})
            if (Failed(frame_->GetConfigurer()->SetNodeValue(name, value)))
                std::abort();
    }
    ~Card() { frame_->DisConnect(); }

    // `period` between segments; zero: as fast as the host takes them.
    Result Stream(std::uint32_t frames, std::uint32_t segments, Clock::duration period) {
        Result result;
        std::vector<Clock::time_point> raised(frames + 1);
        result.latencies.reserve(frames);
        std::atomic<std::uint64_t> seen{0};
        const auto onImage = [&](std::shared_ptr<IImage> image, IDevice*, unsigned int, unsigned int, void*) {
            const Clock::time_point now = Clock::now();
            result.latencies.push_back(Seconds(now - raised[image->GetImageInfo()->blockId]));
            ++seen;
        };
        const auto stream = frame_->ShareStream(0);
        if (Failed(stream->Open(0, nullptr)) || Failed(stream->Start(onImage, nullptr, 0, nullptr)))
            std::abort();
        Play(1, segments, period, raised); // what is made once
        Play(2, segments, period, raised);
        const std::uint64_t before = Test::Allocations();
        const auto start = Clock::now();
        for (std::uint32_t id = 3; id <= frames; ++id)
            Play(id, segments, period, raised);
        while (seen < frames && Clock::now() - raised[frames] < std::chrono::seconds(2))
            std::this_thread::sleep_for(std::chrono::microseconds(50));
        result.framesPerSecond = (frames - 2) / Seconds(Clock::now() - start);
        result.allocationsPerFrame = static_cast<double>(Test::Allocations() - before) / (frames - 2);
        stream->Stop();
        stream->Close();
        result.delivered = seen;
        result.dropped = static_cast<const IStream&>(*stream).GetStatistics().droppedImages;
        return result;
    }

    // Bytes a second of the same reads into images of a pool, of which one is still with the client while the
    // next is filled.
    double BareReads(std::uint32_t frames) const {
        ImageInfo info;
        info.width = Width;
        info.height = Height;
        info.pixelFormat = Mono8;
        const auto pool = ImagePoolFactory::CreateRecycleImagePool(1ULL << 32, "bench");
        const int fd = open(card_.Node("c2h_0").c_str(), O_RDONLY | O_CLOEXEC);
        std::unique_ptr<IImage> previous = pool->Create(&info, nullptr, 0);
        const auto start = Clock::now();
        for (std::uint32_t i = 0; i < frames; ++i) {
            auto image = pool->Create(&info, nullptr, 0);
            for (std::uint32_t n = 0; n < Segments; ++n)
                if (pread(fd, image->GetImageBuff() + n * (FrameBytes / Segments), FrameBytes / Segments,
                          n * (FrameBytes / Segments)) <= 0)
                    std::abort();
            previous = std::move(image);
        }
        const double seconds = Seconds(Clock::now() - start);
        close(fd);
        return frames * static_cast<double>(FrameBytes) / seconds;
    }

private:
    void Play(std::uint32_t id, std::uint32_t segments, Clock::duration period,
              std::vector<Clock::time_point>& raised) {
        const std::uint32_t length = FrameBytes / segments;
        for (std::uint32_t n = 0; n < segments; ++n) {
            next_ = std::max(next_, Clock::now() - period) + period;
            while (Clock::now() < next_)
                std::this_thread::sleep_for(std::chrono::microseconds(50));
            if (!card_.AwaitReady(std::chrono::seconds(5)))
                std::abort();
            Test::CardSegment segment;
            segment.blockId = id;
            segment.number = static_cast<std::uint16_t>(n);
            segment.count = static_cast<std::uint16_t>(segments);
            segment.offset = std::uint64_t{n} * length;
            segment.length = length;
            card_.Lay(segment);
            raised[id] = Clock::now();
            card_.Raise();
        }
    }

    Test::TempDir root_;
    GrabberCard card_;
    KdManager manager_;
    std::shared_ptr<IDevice> interface_;
    std::shared_ptr<IDevice> frame_;
    Clock::time_point next_;
};

double At(std::vector<double> values, double part) {
    std::sort(values.begin(), values.end());
    return values.empty() ? 0
                          : values[static_cast<std::size_t>(part * static_cast<double>(values.size() - 1))];
}

void Print(const char* what, const Result& result) {
    std::printf(
        "%s: %.0f segments/s, %.2f GB/s, %llu frames, %llu dropped; from the last interrupt to the callback "
        "%.2f ms (median), %.2f ms (99 %%)\n",
        what, result.framesPerSecond * Segments, result.framesPerSecond * FrameBytes / 1e9,
        static_cast<unsigned long long>(result.delivered), static_cast<unsigned long long>(result.dropped),
        1000 * At(result.latencies, 0.5), 1000 * At(result.latencies, 0.99));
}

} // namespace

int main(int argc, char** argv) {
    const bool smoke = argc > 1 && std::strcmp(argv[1], "--smoke") == 0;
    const std::uint32_t frames = smoke ? 60 : 1000;
    Card card;
    std::vector<double> ratios;
    Result fastest;
    for (int pair = 0; pair < (smoke ? 1 : 5); ++pair) {
        const double bare = card.BareReads(frames);
        fastest = card.Stream(frames, Segments, {});
        ratios.push_back(fastest.framesPerSecond * FrameBytes / bare);
        std::printf("25 MB in 3 segments: bare reads %.2f GB/s, stream %.2f GB/s\n", bare / 1e9,
                    fastest.framesPerSecond * FrameBytes / 1e9);
    }
    std::printf("ratio %.2f (%.2f to %.2f)\n", At(ratios, 0.5), At(ratios, 0), At(ratios, 1));
    Print("as fast as it goes", fastest);
    Print("1000 segments/s told", card.Stream(frames, Segments, std::chrono::milliseconds(1)));
    Print("100 segments/s told", card.Stream(smoke ? 10 : 100, Segments, std::chrono::milliseconds(10)));
    const Result few = card.Stream(smoke ? 20 : 200, 3, {});
    const Result many = card.Stream(smoke ? 20 : 200, 60, {});
    std::printf("allocations a frame: %.2f of 3 segments, %.2f of 60\n", few.allocationsPerFrame,
                many.allocationsPerFrame);
    return 0;
}
