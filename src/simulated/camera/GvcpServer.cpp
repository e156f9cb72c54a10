#include "simulated/camera/GvcpServer.h"

#include <chrono>
#include <poll.h>

namespace VX3 {
namespace Simulated {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int IdleMs = 10;
constexpr int BusyMs = 1;
// Of every batch of commands, what those who do not control may take while somebody does: the rest of theirs
// is dropped, as a network drops, so that neither floods nor slow registers keep the controller waiting.
constexpr std::chrono::milliseconds OthersShare(20);
constexpr std::size_t OthersOfMany = 8; // commands of a full batch

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
    second_.Close();
    elsewhere_.Close();
}

void GvcpServer::Serve() {
    bool again = false;
    while (!stop_.Raised()) {
        // A second socket that is not open has no descriptor, and is passed over.
        std::array<pollfd, 2> pollers{{{socket_.Descriptor(), POLLIN, 0}, {second_.Descriptor(), POLLIN, 0}}};
        if (::poll(pollers.data(), pollers.size(), again ? BusyMs : IdleMs) > 0) {
            if (pollers[0].revents != 0)
                ServeBatch(socket_);
            if (pollers[1].revents != 0)
                ServeBatch(second_);
        }
        const auto now = Clock::now();
        answers_.CheckHeartbeat(now);
        again = target_.Tick(now);
    }
}

// The controller's commands first.
void GvcpServer::ServeBatch(const CameraSocket& socket) {
    std::array<bool, CommandInbox::MostDatagrams> isOthers{};
    const std::size_t count = inbox_.Fill(socket);
    if (silent_)
        return;
    for (std::size_t i = 0; i < count; ++i) {
        isOthers[i] = !control_.IsHeldBy(inbox_.At(i).from);
        if (!isOthers[i])
            Handle(socket, inbox_.At(i));
    }
    const bool held = control_.IsHeld();
    // More than a batch waits: the controller's next command may be behind it.
    std::size_t left = held && count == CommandInbox::MostDatagrams ? OthersOfMany : count;
    const auto end = Clock::now() + OthersShare;
    for (std::size_t i = 0; i < count && left != 0 && !stop_.Raised(); ++i)
        if (isOthers[i] && (!held || Clock::now() < end)) {
            Handle(socket, inbox_.At(i));
            --left;
        }
}

void GvcpServer::Handle(const CameraSocket& socket, const CommandInbox::Arrived& arrived) {
    const NET_ENDPOINT& sender = arrived.from;
    Gvcp::CommandPacket command;
    if (!Gvcp::DecodeCommand(arrived.bytes, command))
        return;
    const SeenCommand seen = Describe(command, arrived.bytes.size);
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
        Send(socket, AckFaults::Steps(*rule, {ack.data(), size}), sender);
    else
        socket.Send({ack.data(), size}, sender, arrived.to);
}

void GvcpServer::Send(const CameraSocket& socket, const std::vector<AckStep>& steps, const NET_ENDPOINT& to) {
    for (const AckStep& step : steps) {
        const WireBytes bytes{step.bytes.data(), step.bytes.size()};
        switch (step.kind) {
        case AckStep::Kind::Send:
            socket.Send(bytes, to);
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
