// Publishing end to end: what the sender costs against the kernel's own floor in the same run, how much later
// the remote user sees a frame than the local one, and four cameras at once. All over the loopback interface.
//
//   bench_publish [--smoke]
//
// Fails where the sender takes more than 1.2 times the CPU of a bare loop that sends headers and pixels from
// where they lie (with --smoke it only says so); a loop whose packets lie ready side by side is printed
// besides.
#include "gev/control/GevCmdHelper.h"
#include "remote/RemoteDevice.h"
#include "simulated/publish/GevSimuGvsp.h"
#include "vx3/core/Utilities.h"
#include "vx3/simulated/ImageCamera.h"
#include "vx3/simulated/Publish.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstdio>
#include <cstring>
#include <netinet/in.h>
#include <netinet/udp.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

#ifndef UDP_SEGMENT
#define UDP_SEGMENT 103
#endif

using namespace VX3;

namespace {

constexpr std::uint32_t Loopback = 0x7F000001;
constexpr std::uint32_t Width = 1920;
constexpr std::uint32_t Height = 1200;
constexpr double Allowed = 1.2;

double CpuSeconds() {
    rusage usage{};
    (void)::getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// A socket that takes what it has room for and drops the rest, unread: the same for all who send to it.
class Sink {
public:
    Sink() : fd_(::socket(AF_INET, SOCK_DGRAM, 0)) {
        sockaddr_in own{};
        own.sin_family = AF_INET;
        own.sin_addr.s_addr = htonl(Loopback);
        socklen_t length = sizeof(own);
        (void)::bind(fd_, reinterpret_cast<sockaddr*>(&own), length);
        (void)::getsockname(fd_, reinterpret_cast<sockaddr*>(&own), &length);
        port_ = ntohs(own.sin_port);
    }
    ~Sink() { ::close(fd_); }
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;
    std::uint16_t Port() const { return port_; }

private:
    int fd_;
    std::uint16_t port_ = 0;
};

int Connected(std::uint16_t port) {
    const int fd = ::socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_addr.s_addr = htonl(Loopback);
    to.sin_port = htons(port);
    const int room = 8 << 20;
    (void)::setsockopt(fd, SOL_SOCKET, SO_SNDBUF, &room, sizeof(room));
    (void)::connect(fd, reinterpret_cast<sockaddr*>(&to), sizeof(to));
    return fd;
}

// How a bare loop's packets lie in memory: as they leave, or headers here and pixels there, as images have
// them.
enum class Lie { Together, Apart };

// CPU seconds a gigabyte of frames.
double BareLoop(bool segments, Lie lie, std::size_t packet, unsigned frames, std::uint16_t port) {
    const std::size_t count = (std::size_t{Width} * Height + packet - 9) / (packet - 8);
    std::vector<std::uint8_t> bytes(count * packet, 7);
    std::vector<std::uint8_t> heads(count * 8, 7);
    const int fd = Connected(port);
    const std::size_t train = segments ? 65000 / packet : 64;
    const double before = CpuSeconds();
    for (unsigned frame = 0; frame < frames; ++frame)
        for (std::size_t first = 0; first < count; first += train) {
            const std::size_t here = std::min(train, count - first);
            std::array<iovec, 128> pieces{};
            std::array<mmsghdr, 64> messages{};
            const std::size_t each = lie == Lie::Apart ? 2 : 1;
            for (std::size_t i = 0; i < here; ++i) {
                std::uint8_t* const own = bytes.data() + (first + i) * packet;
                pieces[each * i] = {own, packet};
                if (lie == Lie::Apart) {
                    pieces[2 * i] = {heads.data() + (first + i) * 8, 8};
                    pieces[2 * i + 1] = {own, packet - 8};
                }
            }
            if (segments) {
                alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(std::uint16_t))> control{};
                msghdr message{};
                if (lie == Lie::Together)
                    pieces[0].iov_len = here * packet;
                message.msg_iov = pieces.data();
                message.msg_iovlen = lie == Lie::Together ? 1 : 2 * here;
                message.msg_control = control.data();
                message.msg_controllen = control.size();
                cmsghdr* const header = CMSG_FIRSTHDR(&message);
                header->cmsg_level = IPPROTO_UDP;
                header->cmsg_type = UDP_SEGMENT;
                header->cmsg_len = CMSG_LEN(sizeof(std::uint16_t));
                const auto size = static_cast<std::uint16_t>(packet);
                std::memcpy(CMSG_DATA(header), &size, sizeof(size));
                (void)::sendmsg(fd, &message, 0);
                continue;
            }
            for (std::size_t i = 0; i < here; ++i) {
                messages[i].msg_hdr.msg_iov = &pieces[each * i];
                messages[i].msg_hdr.msg_iovlen = each;
            }
            (void)::sendmmsg(fd, messages.data(), static_cast<unsigned>(here), 0);
        }
    const double cpu = CpuSeconds() - before;
    ::close(fd);
    return cpu / (1e-9 * Width * Height * frames);
}

struct Sent {
    double cpu = 0;      // s a gigabyte
    double gigabits = 0; // a second
};

Sent OurSender(bool segments, std::size_t packet, unsigned frames, std::uint16_t port) {
    ImageInfo info;
    info.width = Width;
    info.height = Height;
    info.pixelFormat = Mono8;
    const std::vector<unsigned char> pixels(std::size_t{Width} * Height, 7);
    const std::shared_ptr<IImage> image = ImageCreator::Create(&info, nullptr, pixels.data());
    GevSimuGvsp sender;
    GevSimuGvsp::Options options;
    options.segmentation = segments;
    sender.SetOptions(options);
    if (Failed(sender.Start({Loopback, 0}, {Loopback, port}, static_cast<std::uint32_t>(packet + 28))))
        return {};
    const auto start = std::chrono::steady_clock::now();
    const double before = CpuSeconds();
    for (unsigned frame = 0; frame < frames;)
        if (Failed(sender.PushImage(image)))
            std::this_thread::sleep_for(std::chrono::microseconds(500));
        else
            ++frame;
    while (sender.GetCounts().stream.frames < frames)
        std::this_thread::sleep_for(std::chrono::microseconds(500));
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const double bytes = 1.0 * Width * Height * frames;
    return {(CpuSeconds() - before) / (1e-9 * bytes), bytes * 8e-9 / seconds};
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

bool SenderAgainstBareLoops(bool smoke) {
    const unsigned frames = smoke ? 100 : 500;
    const int runs = smoke ? 3 : 7;
    const Sink sink;
    bool good = true;
    for (const std::size_t packet : {std::size_t{1472}, std::size_t{8972}})
        for (const bool segments : {true, false}) {
            std::vector<double> ours, bare, apart, ratios, rates;
            for (int run = 0; run < runs; ++run) {
                const Sent sent = OurSender(segments, packet, frames, sink.Port());
                ours.push_back(sent.cpu);
                rates.push_back(sent.gigabits);
                bare.push_back(BareLoop(segments, Lie::Together, packet, frames, sink.Port()));
                apart.push_back(BareLoop(segments, Lie::Apart, packet, frames, sink.Port()));
                ratios.push_back(ours.back() / apart.back());
            }
            const double ratio = Median(ratios);
            good = good && ratio <= Allowed;
            std::printf("sender  %zu bytes  %-8s  ours %.3f s/GB (%.1f Gbit/s)  bare %.3f, ready packets "
                        "%.3f  ratio %.2f (%.2f to %.2f)%s\n",
                        packet + 28, segments ? "GSO" : "sendmmsg", Median(ours), Median(rates),
                        Median(apart), Median(bare), ratio, *std::min_element(ratios.begin(), ratios.end()),
                        *std::max_element(ratios.begin(), ratios.end()),
                        ratio <= Allowed ? "" : "  above 1.2");
        }
    return good;
}

// A published camera and the remote device that has it open.
struct Pair {
    explicit Pair(std::uint16_t port, double framesPerSecond, const char* serial) {
        ImageCameraConfig config;
        config.framesPerSecond = framesPerSecond;
        config.serial = serial;
        camera = MakeImageCamera(config);
        PublishOptions options;
        options.port = port;
        options.address = Loopback;
        std::atomic<std::uint16_t> counter{1};
        const NET_PARAM host{Loopback, 0xFF000000, 0, 0xFFFFFFFF};
        if (Failed(Publish(camera, options)))
            return;
        GevCmdHelper asker(host, host, 1000, counter, port);
        const auto acks = asker.Discovery();
        if (acks.size() != 1)
            return;
        remote = std::make_shared<RemoteDevice>("remote", host, acks.front(), nullptr, port, true);
        if (Failed(remote->Connect()))
            remote.reset();
    }
    ~Pair() {
        remote.reset();
        Withdraw(*camera);
    }
    bool Start(IDevice& device, ImageCallback callback) {
        const auto stream = device.ShareStream(0);
        return stream && !Failed(stream->Open(8, nullptr)) &&
               !Failed(stream->Start(std::move(callback), nullptr, 0, nullptr));
    }
    std::shared_ptr<IDevice> camera;
    std::shared_ptr<RemoteDevice> remote;
};

// Milliseconds from an image's time stamp to now.
ImageCallback Age(std::vector<double>& ages) {
    ages.reserve(100000);
    return [&ages](const std::shared_ptr<IImage>& image, IDevice*, unsigned, unsigned, void*) {
        const ImageInfo& info = *image->GetImageInfo();
        const std::uint64_t stamp = std::uint64_t{info.timestampHigh} << 32 | info.timestampLow;
        ages.push_back(static_cast<double>(GetTimeStampLinux() - stamp) * 1.024e-3);
    };
}

void Latency(bool smoke) {
    std::vector<double> here, there;
    {
        Pair pair(57500, 100, "L");
        if (!pair.remote || Failed(pair.camera->Connect()) || !pair.Start(*pair.camera, Age(here)) ||
            !pair.Start(*pair.remote, Age(there))) {
            std::printf("latency: the pair does not run\n");
            return;
        }
        std::this_thread::sleep_for(std::chrono::seconds(smoke ? 2 : 10));
    }
    std::printf("latency  640 x 480 at 100/s: local callback %.2f ms, remote callback %.2f ms after the time "
                "stamp; added %.2f ms\n",
                Median(here), Median(there), Median(there) - Median(here));
}

void FourAtOnce(bool smoke) {
    std::array<std::vector<double>, 4> ages;
    std::vector<std::unique_ptr<Pair>> pairs;
    const char* const serials[] = {"A", "B", "C", "D"};
    for (unsigned i = 0; i < 4; ++i) {
        pairs.push_back(std::make_unique<Pair>(static_cast<std::uint16_t>(57510 + 2 * i), 100, serials[i]));
        if (!pairs.back()->remote || !pairs.back()->Start(*pairs.back()->remote, Age(ages[i])))
            return;
    }
    std::this_thread::sleep_for(std::chrono::seconds(smoke ? 2 : 10));
    std::printf("four cameras of 640 x 480 at 100/s at once:");
    for (unsigned i = 0; i < 4; ++i) {
        const Statistics counts = std::as_const(*pairs[i]->remote->ShareStream(0)).GetStatistics();
        PublishState state;
        (void)GetPublishState(*pairs[i]->camera, state);
        std::printf("  %llu frames, %llu incomplete, %llu not sent;",
                    static_cast<unsigned long long>(counts.blocks),
                    static_cast<unsigned long long>(counts.incompleteBlocks + counts.lostBlocks),
                    static_cast<unsigned long long>(state.overrun));
    }
    std::printf("\n");
    for (auto& pair : pairs)
        pair->remote->DisConnect();
}

// Resident memory of this process, KiB.
long ResidentKiB() {
    long pages = 0;
    long resident = 0;
    if (std::FILE* const file = std::fopen("/proc/self/statm", "r")) {
        (void)!std::fscanf(file, "%ld %ld", &pages, &resident);
        std::fclose(file);
    }
    return resident * ::sysconf(_SC_PAGESIZE) / 1024;
}

// Commands that are none, or not for strangers to give, `rate` a second, until `running` is false.
void FloodPort(std::uint16_t port, double rate, const std::atomic<bool>& running,
               std::atomic<std::uint64_t>& sent) {
    const int fd = Connected(port);
    const std::array<std::vector<std::uint8_t>, 6> commands{{
        {0x42, 1, 0, 0x80, 0, 4, 0, 1, 0, 1, 0x10, 0},                                // reads the camera
        {0x42, 1, 0, 0x82, 0, 8, 0, 1, 0, 0, 0x0A, 0, 0, 0, 0, 2},                    // wants control
        {0x42, 1, 0, 0x82, 0, 8, 0, 1, 0, 0, 0x0A, 0, 0, 0, 0, 0},                    // takes it away
        {0x42, 1, 0, 0x84, 0, 200, 0, 1, 0, 0},                                       // shorter than it says
        {0x00, 1, 2, 3},                                                              // nothing
        {0x42, 0, 0, 0x40, 0, 12, 0, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF}, // everything again
    }};
    const auto start = std::chrono::steady_clock::now();
    for (std::uint64_t count = 0; running; ++count) {
        const auto& command = commands[count % 5]; // resends of this host's own are its own affair
        (void)::send(fd, command.data(), command.size(), MSG_DONTWAIT);
        ++sent;
        if (count % 64 == 0)
            std::this_thread::sleep_until(
                start + std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                            std::chrono::duration<double>(static_cast<double>(count) / rate)));
    }
    ::close(fd);
}

void Flood(bool smoke) {
    Pair pair(57530, 400, "F"); // 0.98 Gbit/s
    std::vector<double> ages;
    if (!pair.remote || !pair.Start(*pair.remote, Age(ages)))
        return;
    std::this_thread::sleep_for(std::chrono::seconds(1));
    std::atomic<bool> running{true};
    std::atomic<std::uint64_t> sent{0};
    std::thread flood([&] { FloodPort(57530, 50000, running, sent); });
    std::this_thread::sleep_for(std::chrono::seconds(1));
    const long before = ResidentKiB();
    const std::uint64_t sentBefore = sent;
    const auto start = std::chrono::steady_clock::now();
    const auto length = std::chrono::seconds(smoke ? 5 : 60);
    double longest = 0;
    unsigned failed = 0;
    while (std::chrono::steady_clock::now() - start < length) {
        unsigned char bytes[4];
        const auto asked = std::chrono::steady_clock::now();
        failed += Failed(pair.remote->ReadPort(0x11000, bytes, 4)) ? 1 : 0;
        longest = std::max(
            longest,
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - asked).count());
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const double rate = static_cast<double>(sent - sentBefore) / seconds;
    const long grown = ResidentKiB() - before;
    running = false;
    flood.join();
    const Statistics counts = std::as_const(*pair.remote->ShareStream(0)).GetStatistics();
    PublishState state;
    (void)GetPublishState(*pair.camera, state);
    std::printf("flood of %.0f commands/s for %.0f s: %llu frames at 400/s, %llu incomplete, %llu not sent; "
                "longest register "
                "read %.1f ms, %u failed; memory grew by %ld KiB; control %s\n",
                rate, seconds, static_cast<unsigned long long>(counts.blocks),
                static_cast<unsigned long long>(counts.incompleteBlocks + counts.lostBlocks),
                static_cast<unsigned long long>(state.overrun), longest, failed, grown,
                state.controller.port != 0 ? "kept" : "LOST");
}

} // namespace

int main(int argc, char** argv) {
    const bool smoke = argc > 1 && std::strcmp(argv[1], "--smoke") == 0;
    const bool good = SenderAgainstBareLoops(smoke);
    Latency(smoke);
    FourAtOnce(smoke);
    Flood(smoke);
    return good || smoke ? 0 : 1;
}
