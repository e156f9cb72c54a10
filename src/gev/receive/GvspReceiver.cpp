#include "gev/receive/GvspReceiver.h"

#include "gev/control/GevCmdHelper.h"
#include "gev/protocol/Bootstrap.h"
#include "gev/receive/BlockFilter.h"
#include "gev/receive/ReceiveClock.h"
#include "gev/receive/SocketGauge.h"
#include "gev/stream/GvspParserImageA.h"
#include "vx3/core/Logger.h"

#include <algorithm>
#include <utility>

namespace VX3 {

namespace {

constexpr std::uint32_t CommandTimeoutMs = 1000;
constexpr std::chrono::milliseconds SilenceCheck{2};
constexpr std::chrono::milliseconds GaugePause{1};
constexpr std::size_t SmallestReceive = 2048;
constexpr std::uint64_t SmallestBlock = 65536; // backlogs of less are no matter

// The longest datagram worth receiving.
std::size_t MaxDatagram(const GevStreamParam& param) {
    if (param.packetSize == 0)
        return GvspParserImageA::MaxDatagram;
    return std::clamp<std::size_t>(param.packetSize, SmallestReceive, GvspParserImageA::MaxDatagram);
}

} // namespace

GvspReceiver::GvspReceiver(const Options& options) : options_(options) {}

GvspReceiver::~GvspReceiver() {
    (void)StopListen();
}

StatusCode GvspReceiver::StartListen(const GevStreamParam& param, std::shared_ptr<IImagePool> pool,
                                     GvspImageCallback callback, unsigned int count) {
    if (listening_)
        return Status::WrongState;
    const StatusCode status = socket_.Open(param.host.ip, options_.socketBytes);
    if (Failed(status))
        return status;
    socket_.WarnIfTooSmall(param);
    statistics_.Reset();
    blocksWanted_ = 0;
    SetReady(false);
    thread_ = std::make_unique<ThreadEx<>>(
        [this, param, pool = std::move(pool), callback = std::move(callback),
         count](const std::atomic<bool>& running) { ThreadListen(running, param, pool, callback, count); });
    listening_ = true;
    thread_->Start();
    return static_cast<StatusCode>(socket_.Port());
}

StatusCode GvspReceiver::StopListen() {
    if (!listening_)
        return Status::Generic;
    thread_->Stop();
    thread_.reset();
    socket_.Close();
    listening_ = false;
    return Status::Ok;
}

StatusCode GvspReceiver::ResetListen() {
    // The parser's own reset does nothing, so there is nothing to hand to its thread.
    return listening_ ? Status::Ok : Status::WrongState;
}

StatusCode GvspReceiver::AllocOneBuff() {
    if (!listening_)
        return Status::WrongState;
    ++blocksWanted_; // the receive thread owns the ring
    return Status::Ok;
}

bool GvspReceiver::WaitUntilReady(std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    MutexLock lock(readyMutex_);
    while (!ready_ && readyChanged_.WaitUntil(readyMutex_, deadline)) {
    }
    return ready_;
}

void GvspReceiver::SetReady(bool ready) {
    MutexLock lock(readyMutex_);
    ready_ = ready;
    readyChanged_.NotifyAll();
}

void GvspReceiver::ThreadListen(const std::atomic<bool>& running, const GevStreamParam& param,
                                const std::shared_ptr<IImagePool>& pool, const GvspImageCallback& callback,
                                unsigned int count) {
    SenderCheck senders(param.camera.ip, param.name, statistics_);
    const int socket = socket_.Descriptor();
    std::unique_ptr<DatagramSource> source =
        DatagramSource::Create(options_.method, socket, MaxDatagram(param), senders);
    if (!source) {
        source = DatagramSource::Create(ReceiveMethod::RecvMmsg, socket, MaxDatagram(param), senders);
        VxLoggerLog(LogLevel::Info, "SDK", "%s: the system does not join datagrams, receiving batches",
                    param.name.c_str());
    }
    GvspParserImageA::Options options;
    options.redirect = source->Places();
    options.statistics = &statistics_;
    GvspParserImageA parser(callback, param, pool, count, options);
    parser.SetSocketRoom(socket_.DatagramsHeld(param.packetSize));
    requestCounter_ = 1;
    GevCmdHelper helper(param.host, param.camera, CommandTimeoutMs, requestCounter_, options_.gvcpPort);
    OpenPath(helper, param);
    SetReady(true);
    ReceiveLoop(running, *source, parser, helper, param.channelIndex);
    (void)parser.Flush();
    SetReady(false);
}

void GvspReceiver::OpenPath(GevCmdHelper& helper, const GevStreamParam& param) const {
    std::uint32_t capability = 0;
    if (Failed(helper.ReadRegister(Bootstrap::GvspCapability, capability)) ||
        (capability & Bootstrap::SourcePortValid) == 0)
        return;
    std::uint32_t port = 0;
    const std::uint32_t address = Bootstrap::StreamRegister(Bootstrap::StreamSourcePort, param.channelIndex);
    if (!Failed(helper.ReadRegister(address, port)) && port != 0)
        socket_.SendOpening(param.camera.ip, port);
}

void GvspReceiver::ReceiveLoop(const std::atomic<bool>& running, DatagramSource& source,
                               GvspParserImageA& parser, GevCmdHelper& helper, std::uint32_t channel) {
    ReceiveClock clock;
    SocketGauge gauge(socket_.Descriptor());
    BlockFilter filter(socket_.Descriptor());
    auto checked = clock.Now();
    auto gauged = checked;
    WireRoom next;
    while (running) {
        const DatagramSource::Batch batch = source.Receive(next, parser.MaxWait());
        const auto now = clock.Advance(batch.count, batch.waited);
        for (std::size_t i = 0; i < batch.count; ++i)
            (void)parser.HandlePacket(batch.items[i].data, batch.items[i].size, next, now);
        if (now - gauged >= GaugePause || parser.IsGated()) {
            gauged = now;
            ReadGauge(gauge, parser, now);
        }
        if (batch.drained)
            parser.NoteDrained(now);
        filter.Follow(parser.Admission(), parser.Geometry().extended);
        if (now - checked >= SilenceCheck) {
            checked = now;
            parser.CheckSilence(next, now);
            AddWantedBlocks(parser);
        }
        SendRequests(parser, helper, channel, now);
    }
}

void GvspReceiver::ReadGauge(SocketGauge& gauge, GvspParserImageA& parser, IGvspParser::TimePoint now) {
    const SocketGauge::Reading reading = gauge.Read();
    // While blocks are left out the count is that of the filter, and only a full buffer tells.
    const std::uint64_t overruns = parser.IsGated() ? 0 : reading.dropped;
    if (overruns != 0)
        LiveStatistics::Add(statistics_.overruns, overruns);
    if (overruns != 0 || reading.queued > reading.room / 16 * 15)
        parser.NoteOverrun(now);
    GvspAdmission::Load load;
    load.overrun = overruns != 0;
    load.fill =
        static_cast<double>(reading.queued) / static_cast<double>(std::max<std::uint64_t>(reading.room, 1));
    load.blocks = static_cast<double>(reading.queued) /
                  static_cast<double>(std::max<std::uint64_t>(parser.Geometry().payloadBytes, SmallestBlock));
    parser.Observe(load, now);
}

void GvspReceiver::AddWantedBlocks(GvspParserImageA& parser) {
    const unsigned int wanted = blocksWanted_.exchange(0);
    for (unsigned int i = 0; i < wanted; ++i) {
        const StatusCode status = parser.AllocOneBuff();
        if (Failed(status))
            VxLoggerLog(LogLevel::Warning, "SDK", "a block that the client asked for is not to be had: %s",
                        StatusText(status).c_str());
    }
}

void GvspReceiver::SendRequests(GvspParserImageA& parser, GevCmdHelper& helper, std::uint32_t channel,
                                IGvspParser::TimePoint now) {
    GvspResendInfo info;
    while (parser.GetResendInfo(info, now)) {
        (void)helper.ResendPacket(info.extended != 0, info.blockId, info.firstPacketId, info.lastPacketId,
                                  channel);
        GevCmdHelper::AdvanceRequestId(requestCounter_);
    }
}

} // namespace VX3
