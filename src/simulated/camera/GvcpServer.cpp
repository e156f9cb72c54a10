#include "simulated/camera/GvcpServer.h"

#include <chrono>
#include <poll.h>

namespace VX3 {
namespace Simulated {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t LargestCommand = 2048; // longer ones are cut, and refused for their length
constexpr int IdleMs = 10;
constexpr int BusyMs = 1;

} // namespace

GvcpServer::GvcpServer(IGvcpTarget& target, bool requiresControl, std::size_t rememberedCommands)
    : target_(target), control_(requiresControl), answers_(target_, control_), log_(rememberedCommands) {}

GvcpServer::~GvcpServer() {
    Stop();
}

bool GvcpServer::Bind(std::uint32_t ip, std::uint16_t port) {
    return socket_.Bind(ip, port) && elsewhere_.Bind(ip, 0);
}

void GvcpServer::Start() {
    stop_.Lower();
    silent_ = false;
    control_.Reset();
    thread_ = std::thread([this] { Serve(); });
}

void GvcpServer::Stop() {
    stop_.Raise();
    if (thread_.joinable())
        thread_.join();
    socket_.Close();
    elsewhere_.Close();
}

void GvcpServer::Serve() {
    std::array<std::uint8_t, LargestCommand> buffer;
    NET_ENDPOINT sender;
    bool again = false;
    while (!stop_.Raised()) {
        pollfd poller{socket_.Descriptor(), POLLIN, 0};
        if (::poll(&poller, 1, again ? BusyMs : IdleMs) > 0) {
            const std::size_t size = socket_.Receive({buffer.data(), buffer.size()}, sender);
            if (size != 0 && !silent_)
                Handle({buffer.data(), size}, sender);
        }
        const auto now = Clock::now();
        answers_.CheckHeartbeat(now);
        again = target_.Tick(now);
    }
}

void GvcpServer::Handle(WireBytes datagram, const NET_ENDPOINT& sender) {
    Gvcp::CommandPacket command;
    if (!Gvcp::DecodeCommand(datagram, command))
        return;
    const SeenCommand seen = Describe(command, datagram.size);
    log_.Add(seen);
    const std::optional<AckRule> rule =
        command.header.command == Gvcp::Command::PacketResend ? std::nullopt : faults_.Take(seen);
    const bool refused = rule && rule->fault == AckFault::ErrorStatus;
    std::array<std::uint8_t, Gvcp::MaxPacket> ack;
    const std::size_t size =
        answers_.Answer(command, sender, Clock::now(), refused ? rule->status : Gvcp::AckStatus::Success,
                        {ack.data(), ack.size()});
    if (size == 0)
        return;
    if (rule)
        Send(AckFaults::Steps(*rule, {ack.data(), size}), sender);
    else
        socket_.Send({ack.data(), size}, sender);
}

void GvcpServer::Send(const std::vector<AckStep>& steps, const NET_ENDPOINT& to) {
    for (const AckStep& step : steps) {
        const WireBytes bytes{step.bytes.data(), step.bytes.size()};
        switch (step.kind) {
        case AckStep::Kind::Send:
            socket_.Send(bytes, to);
            break;
        case AckStep::Kind::SendFromElsewhere:
            elsewhere_.Send(bytes, to);
            break;
        case AckStep::Kind::Wait:
            stop_.SleepUntil(Clock::now() + std::chrono::milliseconds(step.ms));
            break;
        }
    }
}

} // namespace Simulated
} // namespace VX3
