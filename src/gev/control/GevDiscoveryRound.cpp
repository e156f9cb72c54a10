#include "gev/control/GevDiscoveryRound.h"

#include "gev/control/GevCmdHelper.h"
#include "gev/protocol/Bootstrap.h"

#include <algorithm>
#include <cstring>
#include <poll.h>
#include <utility>

namespace VX3 {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds Slice{100};
// A camera that has not told its control privilege by then is asked once more.
constexpr milliseconds AskAgainAfter{400};
constexpr unsigned Attempts = 2;

bool IsInSubnet(std::uint32_t address, const NET_PARAM& host) {
    return host.mask != 0 && ((address ^ host.ip) & host.mask) == 0;
}

} // namespace

GevDiscoveryRound::GevDiscoveryRound(std::vector<Question> questions, std::vector<std::uint16_t> ports,
                                     std::atomic<std::uint16_t>& requestCounter)
    : questions_(std::move(questions)), ports_(std::move(ports)), requestCounter_(requestCounter) {}

std::vector<GevDiscovered> GevDiscoveryRound::Run(const std::function<bool()>& interrupted) {
    AskForCameras();
    const Clock::time_point start = Clock::now();
    lastNews_ = start;
    std::vector<pollfd> waits;
    for (const Line& line : lines_)
        waits.push_back({line.socket.Descriptor(), POLLIN, 0});
    for (auto now = start; !interrupted() && now < std::min(lastNews_ + Silence, start + Longest);
         now = Clock::now()) {
        AskAgain(now);
        if (::poll(waits.data(), waits.size(), static_cast<int>(Slice.count())) <= 0)
            continue;
        std::size_t at = 0;
        for (Line& line : lines_)
            if (waits[at++].revents != 0)
                Receive(line, Clock::now());
    }
    return Results();
}

// Questions -----------------------------------------------------------------------------------------------

GevDiscoveryRound::Line& GevDiscoveryRound::LineOf(const NET_PARAM& host) {
    for (Line& line : lines_)
        if (line.host.ip == host.ip)
            return line;
    lines_.push_back({host, CrossSocket(BroadcastIp, ports_.front(), host.ip, 0)});
    return lines_.back();
}

// An interface that cannot send finds nobody.
void GevDiscoveryRound::AskForCameras() {
    std::array<std::uint8_t, Gvcp::HeaderSize> command{};
    const std::size_t size = Gvcp::EncodeDiscovery({command.data(), command.size()});
    for (const Question& question : questions_)
        for (const std::uint16_t port : ports_)
            (void)LineOf(question.host)
                .socket.SendTo(command.data(), size, question.target != 0 ? question.target : BroadcastIp,
                               port);
}

void GevDiscoveryRound::AskForControl(Camera& camera, Clock::time_point now) {
    std::array<std::uint8_t, 16> command{};
    const std::size_t size = Gvcp::EncodeReadReg({command.data(), command.size()}, camera.requestId,
                                                 Bootstrap::ControlChannelPrivilege);
    (void)camera.line->socket.SendTo(command.data(), size, camera.found.info.currentIp, camera.found.port);
    ++camera.asked;
    camera.askAgain = now + AskAgainAfter;
}

void GevDiscoveryRound::AskAgain(Clock::time_point now) {
    for (Camera& camera : cameras_)
        if (camera.found.control == GevDiscovered::Control::Unknown && camera.asked < Attempts &&
            now >= camera.askAgain)
            AskForControl(camera, now);
}

// Answers -------------------------------------------------------------------------------------------------

void GevDiscoveryRound::Receive(Line& line, Clock::time_point now) {
    std::uint32_t ip = 0;
    std::uint32_t port = 0;
    const StatusCode received = line.socket.RecvFrom(buffer_.data(), buffer_.size(), 1, ip, port);
    Gvcp::AckPacket packet;
    if (Failed(received) || static_cast<std::size_t>(received) > buffer_.size() ||
        !Gvcp::DecodeAck({buffer_.data(), static_cast<std::size_t>(received)}, packet))
        return;
    if (packet.header.code == Gvcp::Ack::Discovery &&
        static_cast<std::size_t>(received) == Gvcp::DiscoveryAckSize)
        TakeDiscovery(line, packet, port, now);
    else if (packet.header.code == Gvcp::Ack::ReadReg)
        TakeControl(packet, ip);
}

void GevDiscoveryRound::TakeDiscovery(Line& line, const Gvcp::AckPacket& packet, std::uint32_t senderPort,
                                      Clock::time_point now) {
    // Some cameras answer from another port than they were asked at.
    const bool asked = std::find(ports_.begin(), ports_.end(), senderPort) != ports_.end();
    const std::uint16_t port = asked ? static_cast<std::uint16_t>(senderPort) : ports_.front();
    // Some answer twice, to the host and to everybody; and to each of the interface's addresses.
    std::string identity(packet.payload.data, packet.payload.data + packet.payload.size);
    identity += std::to_string(port);
    const auto earlier = known_.find(identity);
    if (earlier != known_.end()) {
        GevDiscovered& found = cameras_[earlier->second].found;
        if (!IsInSubnet(found.info.currentIp, found.host) && IsInSubnet(found.info.currentIp, line.host))
            found.host = line.host;
        return;
    }
    GevDiscoveryInfo info;
    if (cameras_.size() >= MostCameras || !DecodeDiscoveryPayload(packet.payload, info))
        return;
    GevCmdHelper::AdvanceRequestId(requestCounter_);
    const std::uint16_t requestId = requestCounter_;
    known_.emplace(identity, cameras_.size());
    byRequest_[requestId] = cameras_.size();
    Camera camera{{line.host, port, {}, info, GevDiscovered::Control::Unknown}, &line, requestId, 0, now};
    std::copy_n(buffer_.begin(), camera.found.ack.bytes.size(), camera.found.ack.bytes.begin());
    cameras_.push_back(std::move(camera));
    lastNews_ = now;
    AskForControl(cameras_.back(), now);
}

void GevDiscoveryRound::TakeControl(const Gvcp::AckPacket& packet, std::uint32_t sender) {
    const auto asked = byRequest_.find(packet.header.ackId);
    if (asked == byRequest_.end() || cameras_[asked->second].found.info.currentIp != sender)
        return;
    GevDiscovered& found = cameras_[asked->second].found;
    std::uint32_t privilege = 0;
    if (packet.header.status == Gvcp::AckStatus::AccessDenied)
        found.control = GevDiscovered::Control::Held;
    else if (packet.header.status != Gvcp::AckStatus::Success ||
             !Gvcp::DecodeReadRegAck(packet.payload, privilege))
        found.control = GevDiscovered::Control::Silent;
    else
        found.control = privilege != 0 ? GevDiscovered::Control::Held : GevDiscovered::Control::Free;
}

std::vector<GevDiscovered> GevDiscoveryRound::Results() {
    std::vector<GevDiscovered> results;
    const Clock::time_point now = Clock::now();
    for (Camera& camera : cameras_) {
        if (camera.found.control == GevDiscovered::Control::Unknown && camera.asked == Attempts &&
            now >= camera.askAgain)
            camera.found.control = GevDiscovered::Control::Silent;
        results.push_back(std::move(camera.found));
    }
    return results;
}

} // namespace VX3
