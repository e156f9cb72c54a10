// The control channel of a simulated camera: a socket and a thread that answers what arrives there.
#pragma once

#include "simulated/camera/AckFaults.h"
#include "simulated/camera/CameraSocket.h"
#include "simulated/camera/CommandInbox.h"
#include "simulated/camera/CommandLog.h"
#include "simulated/camera/GvcpAnswers.h"
#include "simulated/camera/StopSignal.h"

#include <atomic>
#include <thread>

namespace VX3 {
namespace Simulated {

// Start and Stop belong to the owner; the rest is safe to use from any thread.
class GvcpServer {
public:
    // `target` outlives the server.
    GvcpServer(IGvcpTarget& target, bool requiresControl, std::size_t rememberedCommands);
    ~GvcpServer();

    // ip 0: every address; port 0: chosen by the system. False when they are not to be had.
    [[nodiscard]] bool Bind(std::uint32_t ip, std::uint16_t port);
    // Serves that port as well.
    [[nodiscard]] bool BindToo(std::uint32_t ip, std::uint16_t port) { return second_.Bind(ip, port); }
    std::uint16_t Port() const { return socket_.Port(); }
    void Start();
    // Closes the socket too.
    void Stop();

    // Hears nothing and says nothing.
    void SetSilent(bool silent) { silent_ = silent; }
    void ForgetController() { control_.Reset(); }
    AckFaults& Faults() { return faults_; }
    CommandLog& Log() { return log_; }

private:
    void Serve();
    void ServeBatch(const CameraSocket& socket);
    void Handle(const CameraSocket& socket, const CommandInbox::Arrived& arrived);
    void Send(const CameraSocket& socket, const std::vector<AckStep>& steps, const NET_ENDPOINT& to);

    IGvcpTarget& target_;
    ControlPrivilege control_;
    GvcpAnswers answers_;
    AckFaults faults_;
    CommandLog log_;
    CommandInbox inbox_;
    CameraSocket socket_;
    CameraSocket second_;
    CameraSocket elsewhere_;
    StopSignal stop_;
    std::atomic<bool> silent_{false};
    std::thread thread_;
};

} // namespace Simulated
} // namespace VX3
