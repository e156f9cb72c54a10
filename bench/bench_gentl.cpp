// What the GenTL consumer costs: processor time a gigabyte and frames a second of a client that reads every
// pixel once, through streams, images and the callback, against the same client calling the same producer
// bare, in the same run. The producer returns announced buffers on a beat and fills nothing. Frames in place,
// and copied.
//
//   bench_gentl [--smoke]
#include "support/ProducerLab.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <sys/resource.h>
#include <thread>
#include <vector>

namespace {

using namespace VX3;
using namespace VX3::Test;
using std::chrono::steady_clock;

struct Load {
    unsigned int width;
    unsigned int height;
    long long paceUs;
    double Megabytes() const { return width * 1e-6 * height; }
};

double ProcessorSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// What a client does with a picture at the least: every byte is read once.
std::uint64_t ReadPixels(const unsigned char* pixels, std::size_t size) {
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i + sizeof(sum) <= size; i += sizeof(sum)) {
        std::uint64_t word = 0;
        std::memcpy(&word, pixels + i, sizeof(word));
        sum += word;
    }
    return sum;
}

volatile std::uint64_t g_sink;

struct Result {
    double framesPerSecond = 0;
    double secondsPerGigabyte = 0;
    bool inPlace = true;
};

// Measures while `count` grows by `frames`.
Result Measure(const std::atomic<unsigned int>& count, unsigned int frames, const Load& load) {
    while (count < frames / 10)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const unsigned int first = count;
    const auto start = steady_clock::now();
    const double before = ProcessorSeconds();
    while (count < first + frames)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    const double seconds = std::chrono::duration<double>(steady_clock::now() - start).count();
    const double measured = count - first;
    return {measured / seconds, (ProcessorSeconds() - before) / (measured * load.Megabytes() * 1e-3), true};
}

ProducerSettings SettingsOf(const Load& load, bool copying) {
    ProducerSettings settings{{"pace.us", std::to_string(load.paceUs)}};
    if (copying)
        settings["revoke.busy"] = "1";
    return settings;
}

void SetSize(GenTLRemotableDevice& camera, const Load& load) {
    const std::uint32_t size[2] = {load.width, load.height};
    (void)camera.WritePort(0x100, reinterpret_cast<const unsigned char*>(size), sizeof(size));
}

Result Consumer(const Load& load, unsigned int frames, bool copying) {
    GenTLLab lab(SettingsOf(load, copying));
    const auto camera = lab.Camera();
    if (Failed(camera->Connect()))
        return {};
    SetSize(*camera, load);
    IStream* const stream = camera->GetStream(0);
    std::atomic<unsigned int> count{0};
    std::atomic<bool> inPlace{true};
    const auto pool = ImagePoolFactory::CreateRecycleImagePool(1ULL << 30, "bench");
    const auto callback = [&](const std::shared_ptr<IImage>& image, IDevice*, unsigned int, unsigned int,
                              void*) {
        if (count < 4)
            inPlace = inPlace && lab.Producer().WasAnnounced(image->GetImageBuff());
        if (count < frames / 10) // memory that nobody has ever written to is no memory yet, and quick to read
            std::memset(image->GetImageBuff(), 1, image->GetImageInfo()->ImageDataSize());
        g_sink = ReadPixels(image->GetImageBuff(), image->GetImageInfo()->ImageDataSize());
        ++count;
    };
    if (Failed(stream->Open(8, pool)) || Failed(stream->Start(callback, nullptr, 0, pool)))
        return {};
    Result result = Measure(count, frames, load);
    result.inPlace = inPlace;
    stream->Stop();
    stream->Close();
    return result;
}

// The loop that a program without the library would write.
Result Bare(const Load& load, unsigned int frames) {
    ProducerLab lab;
    const auto producer = std::make_shared<GenTLAPI>(lab.Add("bare.cti", SettingsOf(load, false)));
    producer->Load();
    GenTLAPI& api = *producer;
    void* interface = nullptr;
    void* device = nullptr;
    void* port = nullptr;
    void* stream = nullptr;
    void* event = nullptr;
    api.pTLOpenInterface(api.transportHandle, "interface-0", &interface);
    api.pIFOpenDevice(interface, "camera-0", GenTL::DEVICE_ACCESS_EXCLUSIVE, &device);
    api.pDevGetPort(device, &port);
    const std::uint32_t size[2] = {load.width, load.height};
    std::size_t length = sizeof(size);
    api.pGCWritePort(port, 0x100, size, &length);
    api.pDevOpenDataStream(device, "stream-0", &stream);
    const std::size_t bytes = std::size_t{load.width} * load.height;
    std::vector<std::vector<unsigned char>> memory(8, std::vector<unsigned char>(bytes));
    for (auto& buffer : memory) {
        void* handle = nullptr;
        api.pDSAnnounceBuffer(stream, buffer.data(), bytes, buffer.data(), &handle);
        api.pDSQueueBuffer(stream, handle);
    }
    api.pGCRegisterEvent(stream, GenTL::EVENT_NEW_BUFFER, &event);
    api.pDSStartAcquisition(stream, 0, GenTL::GENTL_INFINITE);
    const std::uint32_t one = 1;
    length = sizeof(one);
    api.pGCWritePort(port, 0x110, &one, &length);
    std::atomic<unsigned int> count{0};
    std::atomic<bool> running{true};
    std::thread receiver([&] {
        while (running) {
            GenTL::EVENT_NEW_BUFFER_DATA data{};
            std::size_t room = sizeof(data);
            if (api.pEventGetData(event, &data, &room, 100) != GenTL::GC_ERR_SUCCESS)
                continue;
            g_sink = ReadPixels(static_cast<const unsigned char*>(data.pUserPointer), bytes);
            ++count;
            api.pDSQueueBuffer(stream, data.BufferHandle);
        }
    });
    const Result result = Measure(count, frames, load);
    running = false;
    receiver.join();
    api.pDSStopAcquisition(stream, 0);
    api.pDevClose(device);
    api.pIFClose(interface);
    return result;
}

struct Ratios {
    std::vector<double> values;
    void Print(const char* what) {
        std::sort(values.begin(), values.end());
        std::printf("  %s %.2f (%.2f to %.2f)", what, values[values.size() / 2], values.front(),
                    values.back());
    }
};

// False when frames that ought to lie in place do not, or copies do.
bool Compare(const char* name, const Load& load, unsigned int frames, int pairs) {
    bool right = true;
    for (const bool copying : {false, true}) {
        Ratios rate;
        Ratios cost;
        double bareCost = 0;
        double bareRate = 0;
        for (int i = 0; i < pairs; ++i) {
            const Result bare = Bare(load, frames);
            const Result ours = Consumer(load, frames, copying);
            right = right && ours.inPlace != copying && ours.framesPerSecond > 0;
            rate.values.push_back(ours.framesPerSecond / bare.framesPerSecond);
            cost.values.push_back(ours.secondsPerGigabyte / bare.secondsPerGigabyte);
            bareCost = bare.secondsPerGigabyte;
            bareRate = bare.framesPerSecond;
        }
        std::printf("%s %s, bare %.0f frames/s, %.3f CPU s/GB:", name, copying ? "copied" : "in place",
                    bareRate, bareCost);
        rate.Print("frames/s ratio");
        cost.Print("CPU ratio");
        std::printf(" over %d pairs\n", pairs);
    }
    return right;
}

} // namespace

int main(int argc, char** argv) {
    const bool smoke = argc > 1 && std::strcmp(argv[1], "--smoke") == 0;
    const int pairs = smoke ? 1 : 7;
    const bool small = Compare("1 MB frames", {1024, 1024, 1000}, smoke ? 300 : 2000, pairs);
    const bool large = Compare("25 MB frames", {5120, 4880, 20000}, smoke ? 100 : 200, pairs);
    if (!small || !large)
        std::printf("frames did not lie where they were announced, or copies did\n");
    return small && large ? 0 : 1;
}
