#include "support/ScriptedStream.h"

#include "support/ScriptedSending.h"

#include <algorithm>
#include <arpa/inet.h>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <vector>

namespace VX3 {
namespace Test {

namespace {
using Clock = std::chrono::steady_clock;

// A host may ask for absurd ranges; a camera answers so many packets a request.
constexpr std::uint32_t mostPacketsPerRequest = 100000;
} // namespace

ScriptedStream::ScriptedStream(std::uint32_t sourceIp)
    : socket_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(sourceIp);
    socklen_t length = sizeof(address);
    if (!socket_ || ::bind(socket_.Get(), reinterpret_cast<sockaddr*>(&address), length) != 0 ||
        ::getsockname(socket_.Get(), reinterpret_cast<sockaddr*>(&address), &length) != 0)
        throw std::runtime_error("the scripted camera cannot bind a stream socket");
    sourcePort_ = ntohs(address.sin_port);
}

ScriptedStream::~ScriptedStream() {
    Stop();
}

void ScriptedStream::Start(const NET_ENDPOINT& destination, const StreamGeometry& geometry,
                           const StreamScript& script) {
    MutexLock control(control_);
    StopThread();
    MutexLock lock(mutex_);
    destination_ = destination;
    geometry_ = geometry;
    script_ = script;
    counts_ = {};
    held_.clear();
    requests_.clear();
    resendRandom_.seed(script.seed + 1);
    stop_ = false;
    running_ = true;
    thread_ = std::thread([this, destination, geometry, script] { Run(destination, geometry, script); });
}

void ScriptedStream::Stop() {
    MutexLock control(control_);
    StopThread();
}

void ScriptedStream::StopThread() {
    {
        MutexLock lock(mutex_);
        stop_ = true;
        done_.NotifyAll();
    }
    if (thread_.joinable())
        thread_.join();
}

bool ScriptedStream::WaitDone(std::chrono::milliseconds timeout) {
    const auto deadline = Clock::now() + timeout;
    MutexLock lock(mutex_);
    while (running_ && Clock::now() < deadline)
        (void)done_.WaitUntil(mutex_, deadline);
    return !running_;
}

void ScriptedStream::Run(NET_ENDPOINT destination, StreamGeometry geometry, StreamScript script) {
    (void)::prctl(PR_SET_TIMERSLACK, 1000UL, 0UL, 0UL, 0UL); // sleeps that are microseconds true
    const ScriptedPackets packets(geometry, script);
    ScriptedSending sending(socket_.Get(), destination, script);
    const auto period = std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>(script.framesPerSecond > 0 ? 1 / script.framesPerSecond : 0));
    const std::uint32_t lastId = packets.TrailerId() - (script.omitTrailer ? 1 : 0);
    std::uint64_t blockId = script.firstBlockId;
    auto due = Clock::now();
    for (std::uint64_t frame = 0; !stop_ && (script.frames == 0 || frame < script.frames); ++frame) {
        WaitUntil(due);
        due += period;
        BeginBlock(blockId, script.resendMemory);
        for (std::uint32_t id = 0; id <= lastId && !stop_; ++id)
            sending.Send(packets.Make(blockId, id, 0));
        sending.EndFrame();
        Publish(sending.Counts());
        blockId = Gvsp::NextBlockId(blockId, script.extendedIds);
    }
    sending.EndStream();
    Publish(sending.Counts());
    MutexLock lock(mutex_);
    running_ = false;
    done_.NotifyAll();
}

void ScriptedStream::WaitUntil(Clock::time_point due) {
    MutexLock lock(mutex_);
    while (!stop_ && Clock::now() < due)
        (void)done_.WaitUntil(mutex_, due);
}

void ScriptedStream::BeginBlock(std::uint64_t blockId, std::size_t memory) {
    MutexLock lock(mutex_);
    held_.push_back(blockId);
    if (held_.size() > memory)
        held_.pop_front();
}

void ScriptedStream::Publish(const StreamCounts& sent) {
    MutexLock lock(mutex_);
    counts_.frames = sent.frames;
    counts_.packets = sent.packets;
    counts_.dropped = sent.dropped;
    counts_.duplicated = sent.duplicated;
}

void ScriptedStream::Resend(const Gvcp::ResendRequest& request) {
    MutexLock lock(mutex_);
    ++counts_.resendRequests;
    if (!script_.serveResends)
        return;
    const bool held = std::find(held_.begin(), held_.end(), request.blockId) != held_.end();
    if (held && request.extended == script_.extendedIds)
        SendAgain(request);
    else
        ++counts_.requestsNotServed;
}

void ScriptedStream::SendAgain(const Gvcp::ResendRequest& request) {
    const ScriptedPackets packets(geometry_, script_);
    const std::uint32_t highest = packets.TrailerId() - (script_.omitTrailer ? 1 : 0);
    const std::uint32_t last = std::min(request.lastPacket, highest);
    ScriptedTrain train(socket_.Get(), destination_, script_.segmentation, 0);
    std::uniform_real_distribution<double> chance(0, 1);
    for (std::uint32_t id = request.firstPacket, n = 0; id <= last && n < mostPacketsPerRequest; ++id, ++n) {
        ++counts_.packetsRequested;
        ++requests_[{request.blockId, id}];
        if (script_.resendErrorStatus != 0) {
            train.Add(packets.MakeUnavailable(request.blockId, id, script_.resendErrorStatus));
        } else if (chance(resendRandom_) >= script_.resendDropProbability) {
            train.Add(packets.Make(request.blockId, id, Gvcp::AckStatus::PacketResent));
            ++counts_.packetsResent;
        }
    }
    train.Flush();
}

StreamCounts ScriptedStream::Counts() const {
    MutexLock lock(mutex_);
    return counts_;
}

std::map<PacketAddress, unsigned> ScriptedStream::ResendRequests() const {
    MutexLock lock(mutex_);
    return requests_;
}

void ScriptedStream::SendTestPacket(const NET_ENDPOINT& destination, std::uint32_t packetSize) const {
    if (packetSize <= Gvsp::IpUdpOverhead)
        return;
    const std::vector<std::uint8_t> zeros(packetSize - Gvsp::IpUdpOverhead);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(destination.ip);
    address.sin_port = htons(static_cast<std::uint16_t>(destination.port));
    (void)::sendto(socket_.Get(), zeros.data(), zeros.size(), 0, reinterpret_cast<const sockaddr*>(&address),
                   sizeof(address));
}

} // namespace Test
} // namespace VX3
