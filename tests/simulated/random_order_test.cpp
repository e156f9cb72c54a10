// Two threads open, start, stop, close, connect, disconnect, snap and set features of one camera in random
// orders while frames flow. Nothing may deadlock, leak or touch freed memory, whatever the codes say.
#include "simulated/VirtualInterfaceDev.h"
#include "support/Threads.h"

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <random>

namespace VX3::Test {
namespace {

constexpr int Batches = 20;
constexpr int StepsPerBatch = 300;

struct Counters {
    std::atomic<long> frames{0};
    std::atomic<long> started{0};
    std::atomic<long> fromCallback{0};
};

// Now and then the callback itself stops, closes or disconnects.
ImageCallback Callback(unsigned long random, Counters& counters) {
    return [random, &counters](std::shared_ptr<IImage> image, IDevice* device, unsigned int, unsigned int,
                               void*) {
        ++counters.frames;
        const auto choice = (random + image->GetImageInfo()->blockId) % 40;
        if (device == nullptr || choice > 2)
            return;
        ++counters.fromCallback;
        IStream* stream = device->GetStream(0);
        if (choice == 2)
            device->DisConnect();
        else if (stream != nullptr)
            choice == 0 ? stream->Stop() : stream->Close();
    };
}

void TakeSteps(IDevice& camera, unsigned int seed, Counters& counters) {
    std::mt19937 random(seed);
    using Action = std::function<void(IStream&)>;
    const Action open = [](IStream& stream) { stream.Open(2, nullptr); };
    const Action start = [&](IStream& stream) {
        counters.started += !Failed(stream.Start(Callback(random(), counters), nullptr, 2, nullptr));
    };
    const Action actions[] = {open,
                              open,
                              start,
                              start,
                              start,
                              [](IStream& stream) { stream.Stop(); },
                              [](IStream& stream) { stream.Close(); },
                              [](IStream& stream) { stream.Snap(5, SnapMode::Default); }};
    for (int step = 0; step < StepsPerBatch; ++step) {
        IStream* stream = camera.GetStream(0); // the plain pointer, on purpose
        const auto action = random() % 12;
        if (action < 2)
            camera.Connect();
        else if (action == 2)
            camera.DisConnect();
        else if (action == 3) {
            if (const auto configurer = camera.ShareConfigurer()) {
                configurer->SetNodeValue("FrameTime", static_cast<unsigned int>(random() % 2));
                configurer->SetNodeValue("Width", static_cast<unsigned int>(16 + random() % 400));
            }
        } else if (stream != nullptr)
            actions[action - 4](*stream);
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 800)); // frames flow meanwhile
    }
}

TEST(RandomOrder, TwoThreadsThousandOrdersWhileFramesFlow) {
    Counters counters;
    for (unsigned int batch = 0; batch < Batches; ++batch) {
        auto interface = std::make_shared<VirtualInterfaceDev>("virtual");
        const auto camera = interface->EnumSubDevices(0).front();
        camera->Connect();
        ASSERT_NE(camera->ShareConfigurer(), nullptr);
        camera->ShareConfigurer()->SetNodeValue("FrameTime", 0U);
        OnThreads(2, [&](unsigned int side) { TakeSteps(*camera, 1000 * batch + side, counters); });
        interface.reset(); // the camera may be in any state, and outlives its interface
    }
    std::printf("%ld streams started, %ld frames, %ld calls from callbacks\n", counters.started.load(),
                counters.frames.load(), counters.fromCallback.load());
    EXPECT_GT(counters.started, 50);
    EXPECT_GT(counters.frames, 100);
}

} // namespace
} // namespace VX3::Test
