// The socket receiver: reads the stream socket, feeds the image parser, sends packet-resend requests.
//
//   idle --StartListen--> listening --StopListen--> idle
//
// One thread a listening receiver; it alone touches socket and parser. StartListen and StopListen are called
// by one client thread at a time, the rest from any thread. Owned by a stream.
#pragma once

#include "device/ThreadEx.h"
#include "gev/protocol/Gvcp.h"
#include "gev/receive/DatagramSource.h"
#include "gev/receive/IGvspReceiver.h"
#include "gev/receive/StreamSocket.h"
#include "vx3/core/Mutex.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace VX3 {

class GevCmdHelper;
class GvspParserImageA;
class SocketGauge;

class GvspReceiver final : public IGvspReceiver {
public:
    struct Options {
        ReceiveMethod method = DatagramSource::MethodFromEnvironment();
        std::uint32_t gvcpPort = Gvcp::Port;
        // Of the socket's receive buffer, as the kernel counts; 0: as much as the system grants.
        std::size_t socketBytes = 0;
    };

    GvspReceiver() : GvspReceiver(Options()) {}
    explicit GvspReceiver(const Options& options);
    ~GvspReceiver() override;

    StatusCode StartListen(const GevStreamParam& param, std::shared_ptr<IImagePool> pool,
                           GvspImageCallback callback, unsigned int count) override;
    StatusCode SetGvspParser(std::unique_ptr<IGvspParser>) override { return Status::NotSupported; }
    StatusCode ResetListen() override;
    StatusCode StopListen() override;
    bool IsListening() const override { return listening_; }
    StatusCode AllocOneBuff() override;
    LiveStatistics* GetStatistics() override { return &statistics_; }
    bool WaitUntilReady(std::chrono::milliseconds timeout) override VX3_EXCLUDES(readyMutex_);

private:
    void ThreadListen(const std::atomic<bool>& running, const GevStreamParam& param,
                      const std::shared_ptr<IImagePool>& pool, const GvspImageCallback& callback,
                      unsigned int count);
    void OpenPath(GevCmdHelper& helper, const GevStreamParam& param) const;
    void ReceiveLoop(const std::atomic<bool>& running, DatagramSource& source, GvspParserImageA& parser,
                     GevCmdHelper& helper, std::uint32_t channel);
    void ReadGauge(SocketGauge& gauge, GvspParserImageA& parser, IGvspParser::TimePoint now);
    void AddWantedBlocks(GvspParserImageA& parser);
    void SendRequests(GvspParserImageA& parser, GevCmdHelper& helper, std::uint32_t channel,
                      IGvspParser::TimePoint now);
    void SetReady(bool ready) VX3_EXCLUDES(readyMutex_);

    const Options options_;
    StreamSocket socket_;
    std::atomic<bool> listening_{false};
    std::atomic<unsigned int> blocksWanted_{0};
    std::atomic<std::uint16_t> requestCounter_{1};
    LiveStatistics statistics_;
    Mutex readyMutex_;
    CondVar readyChanged_;
    bool ready_ VX3_GUARDED_BY(readyMutex_) = false;
    std::unique_ptr<ThreadEx<>> thread_;
};

} // namespace VX3
