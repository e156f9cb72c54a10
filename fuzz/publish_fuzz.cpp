// Published cameras before hostile hosts: descriptions that a camera may have are rewritten or refused, and
// commands, from anybody and in any order, are answered within bounds; whoever does not control changes
// nothing of the camera.
//
// Input: size of the description (2 bytes), the description, then records {sender (1 byte), time passed in 10
// ms (1), size (1), datagram}. A description of size 0 is the camera's own.
#include "FuzzInput.h"
#include "simulated/camera/GvcpAnswers.h"
#include "simulated/publish/GevSimuDevice.h"
#include "vx3/genicam/IGenIObj.h"
#include "vx3/simulated/ImageCamera.h"

using namespace VX3;

namespace {

// Its rate is the only thing that can be written.
std::shared_ptr<IDevice> Camera() {
    ImageCameraConfig config;
    config.width = 16;
    config.height = 16;
    config.framesPerSecond = 1;
    return MakeImageCamera(config);
}

std::uint32_t Rate(IDevice& camera) {
    unsigned char bytes[4] = {};
    auto& port = dynamic_cast<IGenIObj&>(camera);
    (void)port.ReadPort(0x100C, bytes, sizeof(bytes));
    return Wire::Load<std::uint32_t>(bytes);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2)
        return 0;
    const std::size_t described = std::min<std::size_t>(Wire::Load<std::uint16_t>(data), size - 2);
    data += 2;
    size -= 2;
    if (described != 0) {
        const std::string text(data, data + described);
        const auto published = PublishedDescription::Make("fuzz", text, (data[0] & 1U) != 0);
        Fuzz::Require(published.failure.empty() != published.archive.empty());
    }
    data += described;
    size -= described;
    static const std::shared_ptr<IDevice> camera = Camera();
    const auto published = CreateGevSimuDevice(0, 0, camera);
    Simulated::ControlPrivilege control(true);
    Simulated::GvcpAnswers answers(*published, control);
    Simulated::GvcpAnswers::TimePoint now(std::chrono::seconds(1));
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
        const std::uint32_t before = Rate(*camera);
        std::vector<std::uint8_t> ack(Gvcp::MaxPacket);
        const std::size_t answer =
            answers.Answer(command, sender, now, Gvcp::AckStatus::Success, {ack.data(), ack.size()});
        Fuzz::Require(answer == 0 || (answer >= Gvcp::HeaderSize && answer <= ack.size()));
        Fuzz::Require(mayWrite || Rate(*camera) == before);
    }
    (void)published->ControlChanged(0, {});
    return 0;
}
