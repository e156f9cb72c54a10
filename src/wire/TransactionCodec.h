// What a request/answer protocol tells the transaction machine about itself: its packets and its rules. One
// stateless object a protocol, shared by all its transactions.
#pragma once

#include "wire/WireCursor.h"

#include <cstddef>
#include <cstdint>

namespace VX3 {

// One command, before it has an id. What `data` shows must outlive the transaction.
struct WireRequest {
    std::uint16_t command = 0; // the protocol's own code
    std::uint64_t address = 0;
    WireBytes data;        // to be written
    std::size_t count = 0; // bytes to be read
};

// One packet from the other side, judged against the request. The machine compares the id.
struct WireAnswer {
    enum class Kind {
        Foreign,    // no answer to this command: the wait goes on
        Pending,    // the device needs `pendingMs` from now
        Complete,   // `data` is what was asked for
        Refused,    // the device answered with `status`
        Malformed,  // another length or address than asked for
        Incomplete, // less was written than sent
    };
    Kind kind = Kind::Foreign;
    std::uint16_t id = 0;
    std::uint16_t status = 0;
    std::uint16_t pendingMs = 0;
    WireBytes data; // within the packet
};

// Where the next packet stands: after `skip` bytes that belong to none. Size 0: it is not whole yet.
struct WireFrame {
    std::size_t skip = 0;
    std::size_t size = 0;
};

struct TransactionRules {
    // Sends of one command, the first included.
    unsigned attempts = 1;
    // A conversation's first id, and the one after 0xFFFF; ids below `wrapsTo` are reserved from then on.
    std::uint16_t firstId = 1;
    std::uint16_t wrapsTo = 1;
    // Whether the command after one that nobody answered takes the same id again.
    bool silenceKeepsId = true;
    // Whether a pending answer counts for the command whose id it carries only.
    bool pendingCarriesId = true;
    // Most data bytes of one command; longer accesses are split.
    std::size_t readChunk = 0;
    std::size_t writeChunk = 0;

    constexpr std::uint16_t NextId(std::uint16_t id) const {
        return id == 0xFFFF ? wrapsTo : static_cast<std::uint16_t>(id + 1);
    }
};

class ITransactionCodec {
public:
    virtual ~ITransactionCodec() = default;
    virtual const TransactionRules& Rules() const = 0;
    // The command's packet, built in `room` or standing elsewhere; empty when the request makes none. Asked
    // for anew for each attempt (0, 1, ...), so that a retry may say that it is one.
    virtual WireBytes Encode(WireRoom room, const WireRequest& request, std::uint16_t id,
                             unsigned attempt) const = 0;
    // `packet` is one that FrameOf found.
    virtual WireAnswer Judge(WireBytes packet, const WireRequest& request) const = 0;
    // Never asked with no bytes. Over datagrams, what arrived is one packet. A codec for a byte stream looks
    // for the next one here, and by skipping finds its way back after noise.
    virtual WireFrame FrameOf(WireBytes arrived) const { return {0, arrived.size}; }
};

} // namespace VX3
