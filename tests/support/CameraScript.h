// What a scripted camera is and does wrong, as data.
#pragma once

#include "gev/protocol/Bootstrap.h"
#include "gev/protocol/Gvcp.h"
#include "gev/protocol/Gvsp.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace VX3 {
namespace Test {

// PFNC codes the scripted camera's description offers.
constexpr std::uint32_t Mono8 = 0x01080001;
constexpr std::uint32_t Mono16 = 0x01100007;
constexpr std::uint32_t BayerRG8 = 0x01080009;
constexpr std::uint32_t Rgb8 = 0x02180014;

struct CameraConfig {
    // 0: a free address of 127.0.0.0/8. Tests that run side by side then never meet.
    std::uint32_t ip = 0;
    std::uint32_t mask = 0xFF000000;
    std::uint16_t gvcpPort = Gvcp::Port; // 0: chosen by the system
    // Listen on every address (broadcast discovery reaches only such a socket); `ip` is then only reported.
    bool bindAnyAddress = false;

    std::string vendor = "Test Works";
    std::string model = "Scripted";
    std::string version = "1.2.3";
    std::string manufacturerInfo = "a camera made of data";
    std::string serial = "SC-0001";
    std::string userName = "bench";
    std::uint64_t mac = 0x020000C0FFEEULL;

    std::uint32_t streamChannels = 1; // as reported; up to 4 really stream
    std::uint32_t heartbeatTimeoutMs = 3000;
    std::uint32_t pendingTimeoutMs = 0;
    std::uint32_t gvcpCapability = Bootstrap::PacketResendSupported | Bootstrap::WriteMemSupported;
    bool reportsSourcePort = false; // stream source port register valid
    bool requiresControl = true;    // refuse writes of whoever does not hold the control privilege
    bool sendsTestPackets = true;
    std::uint32_t largestTestPacket = 9000; // larger ones are lost on their way

    std::uint32_t width = 640;
    std::uint32_t height = 480;
    std::uint32_t pixelFormat = Mono8;
    std::uint32_t packetSize = 1500; // SCPS until somebody writes it
};

// What happens to the acknowledgement of a command.
enum class AckFault {
    Silence,         // none is sent
    ErrorStatus,     // `status` instead of success
    StaleFirst,      // one with an older id before the right one
    ForeignFirst,    // one from another socket before the right one
    PendingFirst,    // PENDING_ACK announcing `ms`, the right one after `delayMs`
    Late,            // the right one after `delayMs`
    WrongLength,     // its length field is 4 too large
    CutShort,        // the datagram ends 2 bytes before its length says
    WrongCode,       // another acknowledgement code
    WrongAddress,    // memory reads: another address echoed
    IncompleteIndex, // writes: the index says that nothing was written
    Twice,           // sent twice
};

struct AckRule {
    AckFault fault = AckFault::Silence;
    std::optional<Gvcp::Command> command{}; // empty: any
    std::optional<std::uint64_t> address{}; // empty: any
    unsigned skip = 0;                      // matching commands that pass first
    unsigned times = 1;                     // matching commands it is then applied to
    std::uint16_t status = Gvcp::AckStatus::Error;
    std::uint16_t ms = 0;
    unsigned delayMs = 0;
};

struct PacketAddress {
    std::uint64_t block = 0;
    std::uint32_t packet = 0; // 0 leader, 1..n payload, n + 1 trailer
    bool operator<(const PacketAddress& o) const {
        return std::tie(block, packet) < std::tie(o.block, o.packet);
    }
    bool operator==(const PacketAddress& o) const { return block == o.block && packet == o.packet; }
};

// How a stream is sent. Read when a stream starts.
struct StreamScript {
    std::uint64_t frames = 0;       // 0: until stopped
    double framesPerSecond = 0;     // 0: one after the other
    double bytesPerSecond = 0;      // 0: flat out
    std::uint64_t firstBlockId = 1; // then the next, 65535 followed by 1 unless extended
    bool extendedIds = false;
    std::uint16_t payloadType = Gvsp::PayloadType::Image;
    std::optional<std::uint32_t> trailerSizeY; // empty: the height
    bool omitTrailer = false;
    bool segmentation = true; // hand the kernel trains of packets (a receiver that asks may get them whole)

    // Faults of first sendings. Packets named exactly suffer whatever the probabilities say.
    std::uint32_t seed = 1;
    double dropProbability = 0;
    std::set<PacketAddress> drop;
    std::set<std::uint64_t> dropBlocks; // every packet of these
    double duplicateProbability = 0;
    std::set<PacketAddress> duplicate;
    unsigned reorderWindow = 0;       // packets change places with others at most this far away
    bool reorderAcrossFrames = false; // else a frame is out before the next one starts
    // Held until so many further packets were sent, or until the stream's last frame is out.
    std::map<PacketAddress, unsigned> delay;
    std::map<PacketAddress, std::uint16_t> status; // sent with this status

    // Resend requests.
    bool serveResends = true;
    double resendDropProbability = 0;
    std::uint16_t resendErrorStatus = 0; // not 0: answered with empty packets of this status
    std::size_t resendMemory = 256;      // blocks that can be sent again
};

// What the camera saw and did; for assertions.
struct SeenCommand {
    Gvcp::CommandHeader header;
    std::size_t datagramSize = 0;
    std::uint64_t address = 0;      // register and memory commands
    std::uint32_t value = 0;        // WRITEREG: the value; READMEM: the count field
    std::vector<std::uint8_t> data; // WRITEMEM
};

struct StreamCounts {
    std::uint64_t frames = 0;
    std::uint64_t packets = 0; // first sendings, dropped ones included
    std::uint64_t dropped = 0;
    std::uint64_t duplicated = 0;
    std::uint64_t resendRequests = 0;
    std::uint64_t packetsRequested = 0;
    std::uint64_t packetsResent = 0;
    std::uint64_t requestsNotServed = 0; // block no longer or never held
};

} // namespace Test
} // namespace VX3
