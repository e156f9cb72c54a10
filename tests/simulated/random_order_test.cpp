// Two threads open, start, stop, close, connect, disconnect, snap and set features of one camera in random
// orders while frames flow. Nothing may deadlock, leak or touch freed memory, whatever the codes say.
#include "simulated/VirtualInterfaceDev.h"

#include "support/FakeDevice.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <random>

using namespace VX3;
using namespace VX3::Testing;
using namespace std::chrono_literals;

namespace {

constexpr int Orders = 1000;
constexpr int StepsPerOrder = 6;
constexpr auto Bound = 240s; // far above what a loaded machine under a sanitizer needs

// Ends the program with a message when the test has not ended within the bound.
class Watchdog {
public:
    Watchdog()
        : thread_([](const std::atomic<bool>& running) {
              const auto deadline = std::chrono::steady_clock::now() + Bound;
              while (running) {
                  if (std::chrono::steady_clock::now() > deadline) {
                      std::fprintf(stderr, "deadlock: the orders did not end\n");
                      std::abort();
                  }
                  std::this_thread::sleep_for(20ms);
              }
          }) {
        thread_.Start();
    }

private:
    ThreadEx<> thread_;
};

struct Counters {
    std::atomic<long> frames{0};
    std::atomic<long> started{0};
    std::atomic<long> fromCallback{0};
};

class Client {
public:
    Client(IDevice& camera, unsigned int seed, Counters& counters)
        : camera_(camera), random_(seed), counters_(counters) {}

    void RunOrder() {
        for (int step = 0; step < StepsPerOrder; ++step) {
            Step(static_cast<int>(random_() % 12));
            std::this_thread::sleep_for(std::chrono::microseconds(random_() % 800)); // frames flow meanwhile
        }
    }

private:
    void Step(int action) {
        IStream* stream = camera_.GetStream(0); // the plain pointer, on purpose
        switch (action) {
        case 0:
        case 1:
            (void)camera_.Connect(); // any order: refusals belong to it
            break;
        case 2:
            camera_.DisConnect();
            break;
        case 3:
            SetFeature();
            break;
        default:
            if (stream != nullptr)
                StreamStep(*stream, action);
        }
    }
    void StreamStep(IStream& stream, int action) {
        switch (action) {
        case 4:
        case 5:
            (void)stream.Open(2, nullptr);
            break;
        case 6:
        case 7:
        case 8:
            if (!Failed(stream.Start(Callback(), nullptr, 2, nullptr)))
                ++counters_.started;
            break;
        case 9:
            stream.Stop();
            break;
        case 10:
            stream.Close();
            break;
        default:
            (void)stream.Snap(5, SnapMode::Default);
        }
    }
    void SetFeature() {
        if (const auto configurer = camera_.ShareConfigurer()) {
            (void)configurer->SetNodeValue("FrameTime", static_cast<unsigned int>(random_() % 2));
            (void)configurer->SetNodeValue("Width", static_cast<unsigned int>(16 + random_() % 400));
        }
    }
    // Now and then the callback itself stops, closes or disconnects.
    ImageCallback Callback() {
        return [&counters = counters_, random = random_()](std::shared_ptr<IImage> image, IDevice* device,
                                                           unsigned int, unsigned int, void*) {
            ++counters.frames;
            const auto choice = (random + image->GetImageInfo()->blockId) % 40;
            if (device == nullptr || choice > 2)
                return;
            ++counters.fromCallback;
            if (choice == 2) {
                device->DisConnect();
                return;
            }
            if (IStream* stream = device->GetStream(0))
                choice == 0 ? stream->Stop() : stream->Close();
        };
    }

    IDevice& camera_;
    std::mt19937 random_;
    Counters& counters_;
};

} // namespace

TEST(RandomOrder, TwoThreadsThousandOrdersWhileFramesFlow) {
    const Watchdog watchdog;
    Counters counters;
    for (int batch = 0; batch < 20; ++batch) {
        auto interface = std::make_shared<VirtualInterfaceDev>("virtual");
        const auto camera = interface->EnumSubDevices(0).front();
        ASSERT_EQ(camera->Connect(), Status::Ok);
        ASSERT_NE(camera->ShareConfigurer(), nullptr);
        EXPECT_EQ(camera->ShareConfigurer()->SetNodeValue("FrameTime", 0U), Status::Ok);
        std::vector<std::thread> threads;
        for (unsigned int side = 0; side < 2; ++side)
            threads.emplace_back([&, side] {
                Client client(*camera, 1000U * static_cast<unsigned int>(batch) + side, counters);
                for (int order = 0; order < Orders / 20; ++order)
                    client.RunOrder();
            });
        for (auto& thread : threads)
            thread.join();
        interface.reset(); // the camera may be in any state, and outlives its interface
    }
    std::printf("%ld streams started, %ld frames, %ld calls from callbacks\n", counters.started.load(),
                counters.frames.load(), counters.fromCallback.load());
    EXPECT_GT(counters.started, 50);
    EXPECT_GT(counters.frames, 100);
}
