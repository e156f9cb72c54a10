#include "gev/receive/BlockFilter.h"

#include "gev/protocol/Gvsp.h"

#include <array>
#include <linux/filter.h>
#include <sys/socket.h>

namespace VX3 {

namespace {

// The program sees the datagram with its UDP header.
constexpr std::uint32_t Udp = 8;
constexpr std::uint32_t FormatAt = Udp + 4;
constexpr std::uint32_t FormatMask = 0x0F;
constexpr std::uint32_t StandardIdAt = Udp + 2;  // 16 bits
constexpr std::uint32_t ExtendedIdAt = Udp + 12; // the low 32 of 64 bits
constexpr std::uint32_t Everything = 0x40000;    // bytes kept of a datagram that passes

sock_filter Step(std::uint16_t code, std::uint32_t value) {
    return sock_filter{code, 0, 0, value};
}
// So many steps are left out when the comparison holds, and when it does not.
sock_filter Jump(std::uint16_t comparison, std::uint32_t value, std::uint8_t yes, std::uint8_t no) {
    return sock_filter{static_cast<std::uint16_t>(BPF_JMP | BPF_K | comparison), yes, no, value};
}

} // namespace

void BlockFilter::Follow(const GvspAdmission& admission, bool extended) {
    if (admission.Version() == version_)
        return;
    version_ = admission.Version();
    if (admission.IsGated()) {
        Attach(admission, extended);
    } else {
        const int unused = 0;
        (void)::setsockopt(socketFd_, SOL_SOCKET, SO_DETACH_FILTER, &unused, sizeof(unused));
    }
}

// Where it cannot be attached the parser leaves out by itself what is not admitted.
void BlockFilter::Attach(const GvspAdmission& admission, bool extended) const {
    const sock_filter id = extended ? Step(BPF_LD | BPF_W | BPF_ABS, ExtendedIdAt)
                                    : Step(BPF_LD | BPF_H | BPF_ABS, StandardIdAt);
    const std::uint32_t mask = extended ? 0xFFFFFFFFU : 0xFFFFU; // of the distance, which wraps
    const GvspAdmission::Run& current = admission.Current();
    const GvspAdmission::Run& previous = admission.Previous();
    std::array<sock_filter, 13> program{
        Step(BPF_LD | BPF_B | BPF_ABS, FormatAt),
        Step(BPF_ALU | BPF_AND | BPF_K, FormatMask),
        Jump(BPF_JEQ, static_cast<std::uint32_t>(Gvsp::Format::Leader), 9, 0),
        id,
        Step(BPF_ALU | BPF_SUB | BPF_K, current.first),
        Step(BPF_ALU | BPF_AND | BPF_K, mask),
        Jump(BPF_JGE, current.count, 0, 5),
        id,
        Step(BPF_ALU | BPF_SUB | BPF_K, previous.first),
        Step(BPF_ALU | BPF_AND | BPF_K, mask),
        Jump(BPF_JGE, previous.count, 0, 1),
        Step(BPF_RET | BPF_K, 0),
        Step(BPF_RET | BPF_K, Everything),
    };
    const sock_fprog code{program.size(), program.data()};
    (void)::setsockopt(socketFd_, SOL_SOCKET, SO_ATTACH_FILTER, &code, sizeof(code));
}

} // namespace VX3
