#include "support/ScriptedCamera.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace VX3 {
namespace Test {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::size_t mostSeen = 10000;

sockaddr_in AddressOf(std::uint32_t ip, std::uint32_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(ip);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    return address;
}

bool Same(const NET_ENDPOINT& a, const NET_ENDPOINT& b) {
    return a.ip == b.ip && a.port == b.port;
}

UniqueFd UdpSocket() {
    return UniqueFd(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
}

void SendTo(int fd, const void* bytes, std::size_t size, const NET_ENDPOINT& to) {
    const sockaddr_in address = AddressOf(to.ip, to.port);
    (void)::sendto(fd, bytes, size, 0, reinterpret_cast<const sockaddr*>(&address), sizeof(address));
}

// A different loopback address for every camera of every test process.
std::uint32_t NextLoopbackAddress() {
    static std::atomic<std::uint32_t> counter{0};
    const std::uint32_t mixed = (static_cast<std::uint32_t>(::getpid()) * 251 + counter++) * 2654435761U;
    return 0x7F010000U + (mixed >> 9) % 0xFD0000U + 1;
}

} // namespace

ScriptedCamera::ScriptedCamera(const CameraConfig& config)
    : config_(config),
      socket_(UdpSocket()),
      foreignSocket_(UdpSocket()),
      registers_(BindSocket()),
      scripts_(maxChannels) {
    for (unsigned channel = 0; channel < maxChannels; ++channel) {
        streams_.push_back(std::make_unique<ScriptedStream>(config_.bindAnyAddress ? 0 : config_.ip));
        (void)registers_.SetValue(Bootstrap::StreamRegister(Bootstrap::StreamSourcePort, channel),
                                  streams_.back()->SourcePort());
    }
    server_ = std::thread([this] { Serve(); });
}

ScriptedCamera::~ScriptedCamera() {
    {
        MutexLock lock(mutex_);
        stop_ = true;
        stopped_.NotifyAll();
    }
    server_.join();
    StopChannels();
}

const CameraConfig& ScriptedCamera::BindSocket() {
    const bool choose = config_.ip == 0;
    for (int attempt = 0; attempt < 100; ++attempt) {
        if (choose)
            config_.ip = NextLoopbackAddress();
        if (TryBind())
            return config_;
        if (!choose)
            break;
    }
    throw std::runtime_error("the scripted camera cannot bind its control port");
}

bool ScriptedCamera::TryBind() {
    sockaddr_in address = AddressOf(config_.bindAnyAddress ? 0 : config_.ip, config_.gvcpPort);
    socklen_t length = sizeof(address);
    if (::bind(socket_.Get(), reinterpret_cast<const sockaddr*>(&address), length) != 0)
        return false;
    (void)::getsockname(socket_.Get(), reinterpret_cast<sockaddr*>(&address), &length);
    config_.gvcpPort = ntohs(address.sin_port);
    const int yes = 1;
    (void)::setsockopt(socket_.Get(), SOL_SOCKET, SO_BROADCAST, &yes, sizeof(yes));
    return true;
}

bool ScriptedCamera::Stopped() const {
    MutexLock lock(mutex_);
    return stop_;
}

void ScriptedCamera::SleepUnlessStopped(unsigned ms) {
    const auto due = Clock::now() + std::chrono::milliseconds(ms);
    MutexLock lock(mutex_);
    while (!stop_ && Clock::now() < due)
        (void)stopped_.WaitUntil(mutex_, due);
}

// The server ----------------------------------------------------------------------------------------------

void ScriptedCamera::Serve() {
    std::array<std::uint8_t, 2048> buffer;
    while (!Stopped()) {
        pollfd poller{socket_.Get(), POLLIN, 0};
        if (::poll(&poller, 1, 10) > 0) {
            sockaddr_in sender{};
            socklen_t length = sizeof(sender);
            const auto received = ::recvfrom(socket_.Get(), buffer.data(), buffer.size(), MSG_DONTWAIT,
                                             reinterpret_cast<sockaddr*>(&sender), &length);
            if (received > 0 && !vanished_)
                Handle({buffer.data(), static_cast<std::size_t>(received)},
                       {ntohl(sender.sin_addr.s_addr), ntohs(sender.sin_port)});
        }
        CheckHeartbeat();
    }
}

void ScriptedCamera::CheckHeartbeat() {
    const auto limit = std::chrono::milliseconds(registers_.Value(Bootstrap::HeartbeatTimeout));
    {
        MutexLock lock(mutex_);
        if (controller_.port == 0 || Clock::now() - lastHeard_ < limit)
            return;
        controller_ = {};
    }
    (void)registers_.SetValue(Bootstrap::ControlChannelPrivilege, 0);
    StopChannels();
}

void ScriptedCamera::Handle(WireBytes datagram, const NET_ENDPOINT& sender) {
    Gvcp::CommandPacket command;
    if (!Gvcp::DecodeCommand(datagram, command))
        return;
    {
        MutexLock lock(mutex_);
        if (Same(sender, controller_))
            lastHeard_ = Clock::now();
    }
    Remember(command, datagram.size);
    if (command.header.command == Gvcp::Command::PacketResend) {
        ServeResend(command);
        return;
    }
    AckRule rule;
    SeenCommand seen;
    {
        MutexLock lock(mutex_);
        seen = seen_.back();
    }
    const bool faulty = TakeRule(seen, rule);
    const bool refused = faulty && rule.fault == AckFault::ErrorStatus;
    std::array<std::uint8_t, 2048> ack{};
    const std::size_t size =
        Answer(command, sender, refused ? rule.status : Gvcp::AckStatus::Success, {ack.data(), ack.size()});
    if (size == 0)
        return;
    if (faulty)
        SendFaulty(rule, ack.data(), size, sender);
    else
        SendTo(socket_.Get(), ack.data(), size, sender);
}

void ScriptedCamera::Remember(const Gvcp::CommandPacket& command, std::size_t datagramSize) {
    using Gvcp::Command;
    SeenCommand seen;
    seen.header = command.header;
    seen.datagramSize = datagramSize;
    std::uint32_t address = 0;
    Gvcp::MemoryRequest read;
    Gvcp::MemoryData write;
    switch (command.header.command) {
    case Command::ReadReg:
    case Command::WriteReg:
        if (!Gvcp::DecodeWriteReg(command.payload, address, seen.value))
            (void)Gvcp::DecodeReadReg(command.payload, address);
        seen.address = address;
        break;
    case Command::ReadMem:
    case Command::ReadMemEx:
        (void)Gvcp::DecodeReadMem(command.payload, command.header.command == Command::ReadMemEx, read);
        seen.address = read.address;
        seen.value = read.count;
        break;
    case Command::WriteMem:
    case Command::WriteMemEx:
        (void)Gvcp::DecodeWriteMem(command.payload, command.header.command == Command::WriteMemEx, write);
        seen.address = write.address;
        seen.data.assign(write.data.data, write.data.data + write.data.size);
        break;
    default:
        break;
    }
    MutexLock lock(mutex_);
    if (seen_.size() == mostSeen)
        seen_.erase(seen_.begin());
    seen_.push_back(std::move(seen));
}

bool ScriptedCamera::TakeRule(const SeenCommand& command, AckRule& taken) {
    MutexLock lock(mutex_);
    for (auto rule = rules_.begin(); rule != rules_.end(); ++rule) {
        if ((rule->command && *rule->command != command.header.command) ||
            (rule->address && *rule->address != command.address))
            continue;
        if (rule->skip != 0) {
            --rule->skip;
            return false;
        }
        taken = *rule;
        if (--rule->times == 0)
            rules_.erase(rule);
        return true;
    }
    return false;
}

void ScriptedCamera::SendFaulty(const AckRule& rule, std::uint8_t* ack, std::size_t size,
                                const NET_ENDPOINT& to) {
    constexpr std::size_t codeAt = 2;
    constexpr std::size_t lengthAt = 4;
    constexpr std::size_t idAt = 6;
    constexpr std::size_t indexAt = 10;
    const auto word = [ack](std::size_t at) { return Wire::Load<std::uint16_t>(ack + at); };
    const auto change = [ack](std::size_t at, unsigned value) {
        Wire::Store(ack + at, static_cast<std::uint16_t>(value));
    };
    const unsigned id = word(idAt);
    std::array<std::uint8_t, 12> pending{};
    switch (rule.fault) {
    case AckFault::Silence:
        return;
    case AckFault::ErrorStatus: // the answer was made that way
        break;
    case AckFault::IncompleteIndex:
        change(indexAt, 0);
        break;
    case AckFault::StaleFirst:
        change(idAt, id - 1);
        SendTo(socket_.Get(), ack, size, to);
        change(idAt, id);
        break;
    case AckFault::ForeignFirst:
        ack[size - 1] ^= 0xFF;
        SendTo(foreignSocket_.Get(), ack, size, to);
        ack[size - 1] ^= 0xFF;
        break;
    case AckFault::PendingFirst:
        SendTo(
            socket_.Get(), pending.data(),
            Gvcp::EncodePendingAck({pending.data(), pending.size()}, static_cast<std::uint16_t>(id), rule.ms),
            to);
        SleepUnlessStopped(rule.delayMs);
        break;
    case AckFault::Late:
        SleepUnlessStopped(rule.delayMs);
        break;
    case AckFault::WrongLength:
        change(lengthAt, word(lengthAt) + 4U);
        break;
    case AckFault::CutShort:
        size -= 2;
        break;
    case AckFault::WrongCode:
        change(codeAt, word(codeAt) ^ 0x40U);
        break;
    case AckFault::WrongAddress:
        ack[Gvcp::HeaderSize] ^= 0x01;
        break;
    case AckFault::Twice:
        SendTo(socket_.Get(), ack, size, to);
        break;
    }
    SendTo(socket_.Get(), ack, size, to);
}

void ScriptedCamera::ServeResend(const Gvcp::CommandPacket& command) {
    Gvcp::ResendRequest request;
    if (Gvcp::DecodePacketResend(command, request) && request.channel < streams_.size())
        streams_[request.channel]->Resend(request);
}

// A test's own hands --------------------------------------------------------------------------------------

GevDiscoveryInfo ScriptedCamera::DiscoveryInfo() const {
    return registers_.DiscoveryInfo();
}

GVCP_DISCOVERY_ACK ScriptedCamera::DiscoveryAck() const {
    GVCP_DISCOVERY_ACK ack;
    (void)EncodeDiscoveryAck({ack.bytes.data(), ack.bytes.size()}, Gvcp::BroadcastReqId, DiscoveryInfo());
    return ack;
}

std::uint32_t ScriptedCamera::Register(std::uint32_t address) const {
    return registers_.Value(address);
}

void ScriptedCamera::SetRegister(std::uint32_t address, std::uint32_t value) {
    (void)registers_.SetValue(address, value);
}

void ScriptedCamera::AddAckRule(const AckRule& rule) {
    MutexLock lock(mutex_);
    rules_.push_back(rule);
}

std::vector<SeenCommand> ScriptedCamera::Seen() const {
    MutexLock lock(mutex_);
    return seen_;
}

void ScriptedCamera::ClearSeen() {
    MutexLock lock(mutex_);
    seen_.clear();
}

void ScriptedCamera::SetStreamScript(const StreamScript& script, unsigned channel) {
    MutexLock lock(mutex_);
    scripts_.at(channel) = script;
}

void ScriptedCamera::StartStream(const NET_ENDPOINT& destination, unsigned channel) {
    SetRegister(Bootstrap::StreamRegister(Bootstrap::StreamDestination, channel), destination.ip);
    SetRegister(Bootstrap::StreamRegister(Bootstrap::StreamPort, channel), destination.port);
    StartChannel(channel);
}

void ScriptedCamera::StopStream(unsigned channel) {
    streams_.at(channel)->Stop();
}

bool ScriptedCamera::WaitStreamDone(std::chrono::milliseconds timeout, unsigned channel) {
    return streams_.at(channel)->WaitDone(timeout);
}

StreamCounts ScriptedCamera::Counts(unsigned channel) const {
    return streams_.at(channel)->Counts();
}

std::map<PacketAddress, unsigned> ScriptedCamera::ResendRequests(unsigned channel) const {
    return streams_.at(channel)->ResendRequests();
}

std::size_t ScriptedCamera::OpeningDatagram(unsigned channel) {
    std::array<std::uint8_t, 2048> buffer;
    std::size_t newest = 0;
    for (;;) {
        const auto received =
            ::recv(streams_.at(channel)->Descriptor(), buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (received <= 0)
            return newest;
        newest = static_cast<std::size_t>(received);
    }
}

void ScriptedCamera::Vanish() {
    vanished_ = true;
    StopChannels();
}

void ScriptedCamera::Return(bool rebooted) {
    if (rebooted) {
        MutexLock lock(mutex_);
        controller_ = {};
        registers_.Reset();
        for (unsigned channel = 0; channel < maxChannels; ++channel)
            (void)registers_.SetValue(Bootstrap::StreamRegister(Bootstrap::StreamSourcePort, channel),
                                      streams_[channel]->SourcePort());
    }
    vanished_ = false;
}

} // namespace Test
} // namespace VX3
