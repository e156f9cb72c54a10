// One register read of the GVCP client against the bare sendto/recvfrom pair of the same bytes, over loopback
// to the same answering thread, in pairs within one run.
// Usage: bench_gvcp [--smoke]
#include "core/UniqueFd.h"
#include "gev/control/GevCmdHelper.h"
#include "gev/protocol/Bootstrap.h"

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <thread>
#include <vector>

using namespace VX3;

namespace {

constexpr std::uint32_t Localhost = 0x7F000001;

sockaddr_in Loopback(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(Localhost);
    address.sin_port = htons(port);
    return address;
}

class BoundSocket {
public:
    BoundSocket() : fd_(::socket(AF_INET, SOCK_DGRAM, 0)) {
        sockaddr_in address = Loopback(0);
        socklen_t length = sizeof(address);
        if (::bind(fd_.Get(), reinterpret_cast<sockaddr*>(&address), length) != 0 ||
            ::getsockname(fd_.Get(), reinterpret_cast<sockaddr*>(&address), &length) != 0)
            throw std::runtime_error("cannot bind a loopback socket");
        port_ = ntohs(address.sin_port);
    }
    int Fd() const { return fd_.Get(); }
    std::uint16_t Port() const { return port_; }

private:
    UniqueFd fd_;
    std::uint16_t port_ = 0;
};

// Answers every READREG with the least work: the same for both sides.
class Responder {
public:
    Responder() : thread_([this] { Serve(); }) {}
    ~Responder() {
        stop_ = true;
        thread_.join();
    }
    std::uint16_t Port() const { return socket_.Port(); }

private:
    void Serve() {
        std::uint8_t command[64];
        std::uint8_t ack[16];
        while (!stop_) {
            pollfd poller{socket_.Fd(), POLLIN, 0};
            if (::poll(&poller, 1, 100) <= 0)
                continue;
            sockaddr_in from{};
            socklen_t length = sizeof(from);
            while (::recvfrom(socket_.Fd(), command, sizeof(command), MSG_DONTWAIT,
                              reinterpret_cast<sockaddr*>(&from), &length) >= 8) {
                const std::size_t size =
                    Gvcp::EncodeReadRegAck({ack, sizeof(ack)}, Wire::Load<std::uint16_t>(command + 6), 9000);
                (void)::sendto(socket_.Fd(), ack, size, 0, reinterpret_cast<sockaddr*>(&from), length);
            }
        }
    }

    BoundSocket socket_;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

// The floor: what any client must at least do.
class BareClient {
public:
    explicit BareClient(std::uint16_t port) : to_(Loopback(port)) {}
    bool RoundTrip() {
        std::uint8_t command[16];
        std::uint8_t ack[64];
        const std::size_t size = Gvcp::EncodeReadReg({command, sizeof(command)}, ++id_, 0x938);
        return ::sendto(socket_.Fd(), command, size, 0, reinterpret_cast<sockaddr*>(&to_), sizeof(to_)) ==
                   12 &&
               ::recvfrom(socket_.Fd(), ack, sizeof(ack), 0, nullptr, nullptr) == 12;
    }

private:
    BoundSocket socket_;
    sockaddr_in to_;
    std::uint16_t id_ = 0;
};

double MicrosecondsEach(int rounds, const std::function<bool()>& work) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < rounds; ++i)
        if (!work())
            throw std::runtime_error("a round trip failed");
    const std::chrono::duration<double, std::micro> elapsed = std::chrono::steady_clock::now() - start;
    return elapsed.count() / rounds;
}

} // namespace

int main(int argc, char** argv) {
    const bool smoke = argc > 1 && std::strcmp(argv[1], "--smoke") == 0;
    const int pairs = smoke ? 5 : 21;
    const int rounds = smoke ? 200 : 5000;
    Responder responder;
    BareClient bare(responder.Port());
    std::atomic<std::uint16_t> counter{1};
    GevCmdHelper helper({Localhost, 0xFF000000, 0}, {Localhost, 0xFF000000, 0}, 1000, counter,
                        responder.Port());
    std::vector<double> ours;
    std::vector<double> floors;
    std::vector<double> ratios;
    for (int pair = 0; pair < pairs; ++pair) {
        floors.push_back(MicrosecondsEach(rounds, [&] { return bare.RoundTrip(); }));
        ours.push_back(MicrosecondsEach(rounds, [&] {
            std::uint32_t value = 0;
            return helper.ReadRegister(Bootstrap::HeartbeatTimeout, value) == 4 && value == 9000;
        }));
        ratios.push_back(ours.back() / floors.back());
    }
    for (auto* values : {&ours, &floors, &ratios})
        std::sort(values->begin(), values->end());
    const auto middle = static_cast<std::size_t>(pairs / 2);
    std::printf(
        "register read: %.2f us, bare sendto/recvfrom: %.2f us, ratio %.2f (%.2f to %.2f, %d pairs of %d)\n",
        ours[middle], floors[middle], ratios[middle], ratios.front(), ratios.back(), pairs, rounds);
    return 0;
}
