// GenCP as the transaction machine sees it: packets with checksums in a stream of bytes, in which noise may
// stand anywhere; resends that say so; ids that silence uses up, 0 for reads only; pending acknowledgements
// that carry the id. A request's command is a GenCp::Command.
#pragma once

#include "platform/clprotocol/GenCp.h"
#include "wire/TransactionCodec.h"

namespace CLProtocol {

// The Internet checksum: the one's complement of the one's complement sum of 16-bit words, an odd byte
// standing for its word's upper half.
std::uint16_t Checksum(VX3::WireBytes bytes);

class GenCpCodec final : public VX3::ITransactionCodec {
public:
    static constexpr unsigned StandardAttempts = 4; // three resends

    // One attempt is enough to ask whether anybody is there.
    explicit GenCpCodec(unsigned attempts = StandardAttempts);

    const VX3::TransactionRules& Rules() const override { return rules_; }
    VX3::WireBytes Encode(VX3::WireRoom room, const VX3::WireRequest& request, std::uint16_t id,
                          unsigned attempt) const override;
    // Incomplete: the device says that it wrote less. A status without the error bit is a success.
    VX3::WireAnswer Judge(VX3::WireBytes packet, const VX3::WireRequest& request) const override;
    // The next packet whose checksums are right. What looks like a beginning is one only when the checksum
    // over its header says so.
    VX3::WireFrame FrameOf(VX3::WireBytes arrived) const override;

    // Bytes of the command and of the longest answer to it, for time limits.
    static std::size_t CommandSize(const VX3::WireRequest& request);
    static std::size_t AnswerSize(const VX3::WireRequest& request);

private:
    VX3::TransactionRules rules_;
};

} // namespace CLProtocol
