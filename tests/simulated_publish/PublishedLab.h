// A camera that is published, asked from memory: commands in, acknowledgements out, no socket for them.
#pragma once

#include "simulated/camera/GvcpAnswers.h"
#include "simulated/publish/GevSimuDevice.h"
#include "vx3/simulated/ImageCamera.h"
#include "wire/WireCursor.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

namespace VX3::Test {

constexpr NET_ENDPOINT Host{0x7F000001, 4000};
constexpr NET_ENDPOINT Other{0x7F000001, 4001}; // another program on the same host

class PublishedLab {
public:
    using Bytes = std::vector<std::uint8_t>;

    explicit PublishedLab(std::shared_ptr<IDevice> camera, PublishOptions options = {}, unsigned slot = 0)
        : device(std::move(camera)), published(CreateGevSimuDevice(56000, 0, device, options, slot)) {}

    // The acknowledgement; empty for none.
    Bytes Ask(const Bytes& datagram, const NET_ENDPOINT& sender = Host) {
        Gvcp::CommandPacket command;
        if (!Gvcp::DecodeCommand({datagram.data(), datagram.size()}, command))
            return {};
        Bytes ack(Gvcp::MaxPacket);
        ack.resize(answers.Answer(command, sender, now, Gvcp::AckStatus::Success, {ack.data(), ack.size()}));
        return ack;
    }
    static Bytes Command(unsigned code, const Bytes& payload) {
        Bytes bytes(Gvcp::HeaderSize + payload.size());
        WireWriter writer(bytes.data(), bytes.size());
        EXPECT_TRUE(writer.U8(0x42) && writer.U8(1) && writer.U16(static_cast<std::uint16_t>(code)) &&
                    writer.U16(static_cast<std::uint16_t>(payload.size())) && writer.U16(9) &&
                    writer.Copy(payload.data(), payload.size()));
        return bytes;
    }
    static Bytes Words(std::initializer_list<std::uint32_t> values) {
        Bytes bytes(4 * values.size());
        WireWriter writer(bytes.data(), bytes.size());
        for (const std::uint32_t value : values)
            EXPECT_TRUE(writer.U32(value));
        return bytes;
    }
    static std::uint16_t StatusOf(const Bytes& ack) {
        return ack.size() < Gvcp::HeaderSize ? 0xDEAD : Wire::Load<std::uint16_t>(ack.data());
    }
    static std::uint32_t WordOf(const Bytes& ack, std::size_t at = 8) {
        return ack.size() < at + 4 ? 0xDEADDEAD : Wire::Load<std::uint32_t>(ack.data() + at);
    }
    std::uint16_t Write(std::uint32_t address, std::uint32_t value, const NET_ENDPOINT& sender = Host) {
        return StatusOf(Ask(Command(0x0082, Words({address, value})), sender));
    }
    std::uint32_t Read(std::uint32_t address, const NET_ENDPOINT& sender = Host) {
        return WordOf(Ask(Command(0x0080, Words({address})), sender));
    }
    Bytes ReadMemory(std::uint32_t address, std::uint32_t count) {
        const Bytes ack = Ask(Command(0x0084, Words({address, count})));
        return ack.size() < 12 ? Bytes{} : Bytes(ack.begin() + 12, ack.end());
    }
    std::uint16_t WriteText(const std::string& text, std::uint32_t address = 0x0FC0) {
        Bytes payload = Words({address});
        payload.insert(payload.end(), text.begin(), text.end());
        payload.resize(Gvcp::RoundUp4(payload.size()));
        return StatusOf(Ask(Command(0x0086, payload)));
    }
    void Pass(std::chrono::milliseconds time) {
        now += time;
        answers.CheckHeartbeat(now);
        (void)published->Tick(now);
    }

    std::shared_ptr<IDevice> device;
    std::shared_ptr<GevSimuDevice> published;
    Simulated::ControlPrivilege control{true};
    Simulated::GvcpAnswers answers{*published, control};
    Simulated::GvcpAnswers::TimePoint now = std::chrono::steady_clock::now();
};

// 100 x 50 pixels of 8 bits, 5000 bytes.
inline std::shared_ptr<IDevice> SmallCamera(double framesPerSecond = 100) {
    ImageCameraConfig config;
    config.width = 100;
    config.height = 50;
    config.framesPerSecond = framesPerSecond;
    return MakeImageCamera(config);
}

} // namespace VX3::Test
