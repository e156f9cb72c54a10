#include "simulated/camera/StreamChannel.h"

#include "gev/protocol/Gvsp.h"
#include "simulated/camera/BlockSource.h"
#include "simulated/camera/FaultyLine.h"

#include <algorithm>
#include <array>
#include <sys/prctl.h>
#include <vector>

namespace VX3 {
namespace Simulated {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint32_t MostTestPacket = 65535;
constexpr unsigned MostWaitingDatagrams = 1000;
constexpr double LongestPeriod = 3600; // s

std::uint64_t Nanoseconds(Clock::time_point time) {
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(time.time_since_epoch()).count());
}

Clock::duration Period(double framesPerSecond) {
    const double seconds = framesPerSecond > 0 ? std::min(1 / framesPerSecond, LongestPeriod) : 0;
    return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
}

} // namespace

std::unique_ptr<StreamChannel> StreamChannel::Open(std::uint32_t sourceIp, std::uint16_t sourcePort) {
    CameraSocket socket;
    if (!socket.Bind(sourceIp, sourcePort))
        return nullptr;
    return std::unique_ptr<StreamChannel>(new StreamChannel(std::move(socket)));
}

StreamChannel::StreamChannel(CameraSocket socket)
    : socket_(std::move(socket)), resender_(socket_.Descriptor()) {}

StreamChannel::~StreamChannel() {
    Stop();
}

const char* StreamChannel::Start(const StreamSetting& setting, const StreamScript& script) {
    if (const char* objection = BlockSource::Objection(script, setting.image))
        return objection;
    return Start(setting, script, std::make_shared<BlockSource>(script, setting.image, setting.form));
}

const char* StreamChannel::Start(const StreamSetting& setting, const StreamScript& script,
                                 std::shared_ptr<IBlockSource> source) {
    MutexLock control(control_);
    StopThread();
    if (!socket_.Connect(setting.destination))
        return "no way to the destination";
    resender_.Begin(setting.destination, script, source->ExtendedIds());
    stop_.Lower();
    {
        MutexLock lock(mutex_);
        sent_ = {};
        running_ = true;
    }
    thread_ = std::thread([this, setting, script, source] { Run(setting, script, *source); });
    return nullptr;
}

void StreamChannel::Stop() {
    MutexLock control(control_);
    StopThread();
}

void StreamChannel::StopThread() {
    stop_.Raise();
    if (thread_.joinable())
        thread_.join();
}

bool StreamChannel::WaitDone(std::chrono::milliseconds timeout) {
    const auto deadline = Clock::now() + timeout;
    MutexLock lock(mutex_);
    while (running_ && Clock::now() < deadline)
        (void)done_.WaitUntil(mutex_, deadline);
    return !running_;
}

void StreamChannel::Run(const StreamSetting& setting, const StreamScript& script, IBlockSource& source) {
    (void)::prctl(PR_SET_TIMERSLACK, 1000UL, 0UL, 0UL, 0UL); // sleeps that are microseconds true
    Pacer pacer({script.bytesPerSecond, setting.packetDelay, script.busyPacing}, stop_);
    PacketTrain train(socket_.Descriptor(), script.segmentation, &pacer);
    FaultyLine line(train, script);
    StreamCounts counts;
    std::uint64_t blockId = script.firstBlockId;
    const auto start = Clock::now();
    auto due = start;
    const auto publish = [&] {
        counts.dropped = line.Dropped();
        counts.duplicated = line.Duplicated();
        counts.seconds = std::chrono::duration<double>(Clock::now() - start).count();
        Publish(counts);
    };
    while (!stop_.Raised() && (script.frames == 0 || counts.frames < script.frames)) {
        if (script.framesPerSecond > 0)
            stop_.SleepUntil(due);
        due += Period(script.framesPerSecond);
        SentBlock block;
        if (!source.Next(blockId, Nanoseconds(Clock::now()), block))
            continue; // nothing to send yet
        if (const double rate = source.BytesPerSecond(); rate > 0)
            pacer.SetRate(rate);
        resender_.Hold(block);
        const BlockLayout& layout = block.maker->Layout();
        const std::uint32_t end = layout.TrailerId() + (script.omitTrailer ? 0 : 1);
        std::uint32_t id = 0;
        while (id < end && !stop_.Raised())
            line.Send(source.Packet(id++, block.stamp));
        line.EndFrame();
        if (id < end)
            break;
        ++counts.frames;
        counts.packets += end;
        counts.bytes += layout.DataBytes();
        publish();
        blockId = Gvsp::NextBlockId(blockId, source.ExtendedIds());
    }
    line.EndStream();
    publish();
    MutexLock lock(mutex_);
    running_ = false;
    done_.NotifyAll();
}

void StreamChannel::Publish(StreamCounts counts) {
    MutexLock lock(mutex_);
    sent_ = counts;
}

StreamCounts StreamChannel::Counts() const {
    StreamCounts counts = resender_.Counts();
    MutexLock lock(mutex_);
    counts.frames = sent_.frames;
    counts.packets = sent_.packets;
    counts.bytes = sent_.bytes;
    counts.dropped = sent_.dropped;
    counts.duplicated = sent_.duplicated;
    counts.seconds = sent_.seconds;
    return counts;
}

void StreamChannel::SendTestPacket(const NET_ENDPOINT& destination, std::uint32_t packetSize,
                                   bool whole) const {
    if (packetSize <= Gvsp::IpUdpOverhead || packetSize > MostTestPacket || destination.port == 0)
        return;
    const std::vector<std::uint8_t> zeros(packetSize - Gvsp::IpUdpOverhead);
    socket_.ForbidFragments(whole);
    socket_.Send({zeros.data(), zeros.size()}, destination);
    socket_.ForbidFragments(false);
}

std::size_t StreamChannel::TakeNewestDatagram() const {
    std::array<std::uint8_t, 2048> buffer;
    NET_ENDPOINT from;
    std::size_t newest = 0;
    for (unsigned i = 0; i < MostWaitingDatagrams; ++i) {
        const std::size_t size = socket_.Receive({buffer.data(), buffer.size()}, from);
        if (size == 0)
            break;
        newest = size;
    }
    return newest;
}

} // namespace Simulated
} // namespace VX3
