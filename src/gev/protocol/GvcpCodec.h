// GVCP as the transaction machine sees it: two attempts with the same bytes, ids that an unanswered command
// keeps and that never are 0, pending acknowledgements of any id, one packet a datagram.
#pragma once

#include "gev/protocol/Gvcp.h"
#include "wire/TransactionCodec.h"

#include <cstdint>

namespace VX3 {

class GvcpCodecAbs : public ITransactionCodec {
public:
    static const TransactionRules& SharedRules();
    const TransactionRules& Rules() const override { return SharedRules(); }

protected:
    // What an acknowledgement must be, whichever command it is for. Complete: all `length` payload bytes of a
    // success are there.
    static WireAnswer JudgeHeader(WireBytes datagram, Gvcp::Ack code, std::uint16_t length);
};

// Register and memory commands. A request's command is a Gvcp::Command. Registers: the low 32 bits of the
// address travel, data are the value's four bytes. READMEM: the count travels as it is, and cameras answer it
// with whole words. WRITEMEM: data are padded to whole words, and only the padded count is a complete write.
class GvcpCodec : public GvcpCodecAbs {
public:
    WireBytes Encode(WireRoom room, const WireRequest& request, std::uint16_t id,
                     unsigned attempt) const override;
    WireAnswer Judge(WireBytes datagram, const WireRequest& request) const override;
};

// A command that its sender has encoded, id included; any payload of the expected length answers it.
class GvcpRawCodec : public GvcpCodecAbs {
public:
    GvcpRawCodec(WireBytes command, Gvcp::Ack code, std::uint16_t length)
        : command_(command), code_(code), length_(length) {}
    WireBytes Encode(WireRoom, const WireRequest&, std::uint16_t, unsigned) const override {
        return command_;
    }
    WireAnswer Judge(WireBytes datagram, const WireRequest& request) const override;

private:
    const WireBytes command_;
    const Gvcp::Ack code_;
    const std::uint16_t length_;
};

} // namespace VX3
