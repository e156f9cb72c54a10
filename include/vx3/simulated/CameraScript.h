// How a simulated camera sends and what it does wrong, as data; and what it counts and remembers.
#pragma once

#include "vx3/gev/GvcpCommand.h"
#include "vx3/simulated/Block.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <tuple>
#include <vector>

namespace VX3 {
namespace Simulated {

// What happens to the acknowledgement of a command.
enum class AckFault {
    Silence,         // none is sent
    ErrorStatus,     // `status` instead of success; the command is not carried out
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
    std::uint16_t status = 0x8FFF;          // GigE Vision status
    std::uint16_t ms = 0;
    unsigned delayMs = 0; // the camera is busy meanwhile: further commands wait for their turn
};

struct PacketAddress {
    std::uint64_t block = 0;
    std::uint32_t packet = 0; // 0 leader, 1..n payload, n + 1 trailer
    bool operator<(const PacketAddress& o) const {
        return std::tie(block, packet) < std::tie(o.block, o.packet);
    }
    bool operator==(const PacketAddress& o) const { return block == o.block && packet == o.packet; }
};

// Faults of first sendings, and of resends. Chances are from 0 to 1; packets named exactly suffer whatever
// the chances say. The same seed makes the same faults.
struct StreamFaults {
    std::uint32_t seed = 1;
    double dropProbability = 0;
    double dropLeaderProbability = 0;
    double dropTrailerProbability = 0;
    double burstProbability = 0; // that a packet begins a burst of losses ...
    unsigned burstPackets = 0;   // ... of so many
    std::set<PacketAddress> drop;
    std::set<std::uint64_t> dropBlocks; // every packet of these
    double duplicateProbability = 0;
    std::set<PacketAddress> duplicate;
    unsigned reorderWindow = 0;       // packets change places with others at most this far away
    bool reorderAcrossFrames = false; // else a frame is out before the next one starts
    // Held until so many further packets were sent, or until the stream's last frame is out.
    std::map<PacketAddress, unsigned> delay;
    std::map<PacketAddress, std::uint16_t> status; // sent with this status

    bool serveResends = true;
    double resendDropProbability = 0;
    unsigned resendDelayMs = 0;            // asked for now, sent that much later
    std::uint16_t resendErrorStatus = 0;   // not 0: answered with empty packets of this status
    std::uint16_t resendNotHeldStatus = 0; // the same for blocks that the camera holds no longer
};

// How a stream is sent. Read when a stream starts.
struct StreamScript : StreamFaults {
    std::uint64_t frames = 0;       // 0: until stopped
    double framesPerSecond = 0;     // 0: one after the other
    double bytesPerSecond = 0;      // datagrams; 0: flat out. The packet delay register holds besides
    bool busyPacing = false;        // wait in loops instead of sleeping: exact, and costs a processor
    bool segmentation = true;       // hand the kernel trains of packets
    std::uint64_t firstBlockId = 1; // then the next, 65535 followed by 1 unless extended
    bool extendedIds = false;       // 64-bit block and 32-bit packet ids
    std::size_t resendMemory = 256; // blocks that can be sent again
    bool rememberRequests = true;   // which packets were asked for again, for Camera::ResendRequests

    // Sent one after the other, over and over. Empty: images of the camera's registers' geometry, whose
    // pixels are Camera::ExpectedData.
    std::vector<Block> blocks;
    // Of those images:
    std::uint16_t payloadType = Gvsp::PayloadType::Image;
    std::optional<std::uint32_t> trailerSizeY; // empty: the height
    bool movingPicture = true;                 // false: every block carries block 1's pixels
    bool omitTrailer = false;                  // of any block
};

// A command as the camera received it.
struct SeenCommand {
    Gvcp::Command command{};
    std::uint8_t flags = 0;
    std::uint16_t length = 0; // payload bytes, as the packet claims
    std::uint16_t reqId = 0;
    std::size_t datagramSize = 0;
    std::uint64_t address = 0;      // register and memory commands
    std::uint32_t value = 0;        // WRITEREG: the value; READMEM: the count field
    std::vector<std::uint8_t> data; // WRITEMEM
};

// Of one channel since its stream started; first sendings up to the last whole block.
struct StreamCounts {
    std::uint64_t frames = 0;
    std::uint64_t packets = 0; // first sendings, dropped ones included
    std::uint64_t bytes = 0;   // data of those: without headers, leaders and trailers
    std::uint64_t dropped = 0;
    std::uint64_t duplicated = 0;
    double seconds = 0; // from the stream's start to its last packet
    std::uint64_t resendRequests = 0;
    std::uint64_t packetsRequested = 0;
    std::uint64_t packetsResent = 0;
    std::uint64_t requestsNotServed = 0; // block no longer or never held
};

} // namespace Simulated
} // namespace VX3
