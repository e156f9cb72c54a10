// Commands of hostile hosts at the simulated camera: whatever arrives, in any order and from anybody, is
// answered within bounds or not at all, and whoever does not control changes nothing that can be written.
//
// Input: records {sender (1 byte), time passed in 10 ms (1), size (1), datagram}.
#include "FuzzInput.h"
#include "gev/protocol/Bootstrap.h"
#include "simulated/camera/CameraTarget.h"
#include "simulated/camera/GvcpAnswers.h"

using namespace VX3;
using namespace VX3::Simulated;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const CameraConfig config;
    RegisterFile registers;
    PowerUp(registers, config);
    StreamChannels streams(registers, config);
    CameraTarget target(registers, streams);
    ControlPrivilege control(true);
    GvcpAnswers answers(target, control);
    GvcpAnswers::TimePoint now(std::chrono::seconds(1));
    for (std::size_t at = 0; at + 3 <= size;) {
        const NET_ENDPOINT sender{0x7F000001, 4000U + data[at] % 3U};
        now += std::chrono::milliseconds(data[at + 1] * 10);
        const std::size_t length = std::min<std::size_t>(data[at + 2], size - at - 3);
        // Exactly as large as the datagram, so that a read behind its end is seen.
        const std::vector<std::uint8_t> own(data + at + 3, data + at + 3 + length);
        at += 3 + length;
        answers.CheckHeartbeat(now);
        Gvcp::CommandPacket command;
        if (!Gvcp::DecodeCommand({own.data(), own.size()}, command))
            continue;
        const bool mayWrite = control.MayWrite(sender);
        const std::uint32_t before = registers.Value(CameraRegister::Gain);
        std::vector<std::uint8_t> ack(Gvcp::MaxPacket);
        const std::size_t answer =
            answers.Answer(command, sender, now, Gvcp::AckStatus::Success, {ack.data(), ack.size()});
        Fuzz::Require(answer == 0 || (answer >= Gvcp::HeaderSize && answer <= ack.size()));
        Fuzz::Require(mayWrite || registers.Value(CameraRegister::Gain) == before);
    }
    return 0;
}
