// One round of discovery over all addresses of an interface at once: who is there, and who of them is
// controlled. Every camera that answers is asked for its control channel privilege while others still
// answer, so the round lasts as long as discovery alone, however many cameras stay silent.
//
// Used by one thread; sockets live as long as Run.
#pragma once

#include "gev/net/CrossSocket.h"
#include "gev/protocol/DiscoveryInfo.h"
#include "gev/protocol/Gvcp.h"
#include "vx3/gev/NetParam.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <string>
#include <unordered_map>
#include <vector>

namespace VX3 {

struct GevDiscovered {
    enum class Control {
        Unknown, // the round ended before it was asked twice
        Silent,  // asked twice, and nothing that could be read came back
        Free,
        Held, // by some host; where that has exclusive access, cameras refuse even the question
    };
    NET_PARAM host;         // the address it was found from; where several are, one of its own subnet
    std::uint16_t port = 0; // of its control channel
    GVCP_DISCOVERY_ACK ack;
    GevDiscoveryInfo info;
    Control control = Control::Unknown;
};

class GevDiscoveryRound {
public:
    using Clock = std::chrono::steady_clock;

    // Ends this long after the last camera was first heard of, and after Longest in any case.
    static constexpr std::chrono::milliseconds Silence{1000};
    static constexpr std::chrono::milliseconds Longest{3000};
    static constexpr std::size_t MostCameras = 1024;

    struct Question {
        NET_PARAM host;           // one of the interface's addresses
        std::uint32_t target = 0; // a camera's address; 0 asks everybody
    };

    // Every question goes to each of the ports, all at once.
    GevDiscoveryRound(std::vector<Question> questions, std::vector<std::uint16_t> ports,
                      std::atomic<std::uint16_t>& requestCounter);

    // Cameras in the order they answered, each once. `interrupted` is asked at least every 100 ms; once it
    // says yes, what was found so far is returned.
    std::vector<GevDiscovered> Run(const std::function<bool()>& interrupted);

private:
    // The socket of one of the interface's addresses.
    struct Line {
        NET_PARAM host;
        CrossSocket socket;
    };
    struct Camera {
        GevDiscovered found;
        Line* line;
        std::uint16_t requestId;
        unsigned asked;
        Clock::time_point askAgain;
    };

    Line& LineOf(const NET_PARAM& host);
    void AskForCameras();
    void AskForControl(Camera& camera, Clock::time_point now);
    void AskAgain(Clock::time_point now);
    void Receive(Line& line, Clock::time_point now);
    void TakeDiscovery(Line& line, const Gvcp::AckPacket& packet, std::uint32_t senderPort,
                       Clock::time_point now);
    void TakeControl(const Gvcp::AckPacket& packet, std::uint32_t sender);
    std::vector<GevDiscovered> Results();

    const std::vector<Question> questions_;
    const std::vector<std::uint16_t> ports_;
    std::atomic<std::uint16_t>& requestCounter_;
    std::list<Line> lines_;
    std::vector<Camera> cameras_;
    std::unordered_map<std::string, std::size_t> known_;       // answer to camera
    std::unordered_map<std::uint16_t, std::size_t> byRequest_; // request id to camera
    Clock::time_point lastNews_;
    std::array<std::uint8_t, 1024> buffer_{};
};

} // namespace VX3
