// A GigE Vision camera made of our codecs and plain sockets, for tests without network set-up: it runs in
// threads of its own on a loopback address (or any other), serves a small GenICam description from its
// memory, holds the control privilege with its heartbeat, streams, and misbehaves as its script says.
#pragma once

#include "core/UniqueFd.h"
#include "support/CameraScript.h"
#include "support/ScriptedRegisters.h"
#include "support/ScriptedStream.h"
#include "vx3/core/Mutex.h"
#include "vx3/gev/NetParam.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

namespace VX3 {
namespace Test {

// Safe to use from any thread. The constructor throws std::runtime_error when no socket can be bound.
class ScriptedCamera {
public:
    explicit ScriptedCamera(const CameraConfig& config = {});
    ~ScriptedCamera(); // vanishes, joins its threads

    std::uint32_t Ip() const { return config_.ip; }
    std::uint16_t GvcpPort() const { return config_.gvcpPort; }
    // Loopback parameters of a host for this camera (127.0.0.1/8), and the camera's own.
    static NET_PARAM HostParam() { return {0x7F000001, 0xFF000000, 0, 0xFFFFFFFF}; }
    NET_PARAM CameraParam() const { return {config_.ip, config_.mask, 0, 0xFFFFFFFF}; }
    // The discovery acknowledgement it would send.
    GevDiscoveryInfo DiscoveryInfo() const;
    GVCP_DISCOVERY_ACK DiscoveryAck() const;

    // Registers, past every access rule (a test's own hands).
    std::uint32_t Register(std::uint32_t address) const;
    void SetRegister(std::uint32_t address, std::uint32_t value);
    // Held by somebody.
    bool Controlled() const { return Register(Bootstrap::ControlChannelPrivilege) != 0; }

    // Faults of acknowledgements, applied in the order added; used-up rules are forgotten.
    void AddAckRule(const AckRule& rule);
    std::vector<SeenCommand> Seen() const; // the newest 10,000
    void ClearSeen();

    // How the next stream of a channel is sent.
    void SetStreamScript(const StreamScript& script, unsigned channel = 0);
    // Without GenICam: as if the host had written the channel's destination and the start command.
    void StartStream(const NET_ENDPOINT& destination, unsigned channel = 0);
    void StopStream(unsigned channel = 0);
    // True once the script's last frame is out.
    bool WaitStreamDone(std::chrono::milliseconds timeout, unsigned channel = 0);
    StreamCounts Counts(unsigned channel = 0) const;
    // How often the host asked for each packet.
    std::map<PacketAddress, unsigned> ResendRequests(unsigned channel = 0) const;
    // Size of the newest datagram the host sent to the stream's source port; 0 when there was none.
    std::size_t OpeningDatagram(unsigned channel = 0);

    // Stops answering and sending, as if the cable were pulled.
    void Vanish();
    // Answers again; `rebooted`: with every register as at first and nobody in control.
    void Return(bool rebooted = true);

private:
    static constexpr unsigned maxChannels = 4;

    // The configuration with the address and port it got.
    const CameraConfig& BindSocket();
    bool TryBind();
    void Serve();
    bool Stopped() const;
    void CheckHeartbeat();
    void Handle(WireBytes datagram, const NET_ENDPOINT& sender);
    // The acknowledgement's size, 0 for none. A status other than success refuses the command.
    std::size_t Answer(const Gvcp::CommandPacket& command, const NET_ENDPOINT& sender, std::uint16_t refusal,
                       WireRoom room);
    std::size_t AnswerReadReg(const Gvcp::CommandPacket& command, WireRoom room);
    std::size_t AnswerWriteReg(const Gvcp::CommandPacket& command, const NET_ENDPOINT& sender, WireRoom room);
    std::size_t AnswerReadMem(const Gvcp::CommandPacket& command, bool extended, WireRoom room);
    std::size_t AnswerWriteMem(const Gvcp::CommandPacket& command, bool extended, const NET_ENDPOINT& sender,
                               WireRoom room);
    std::size_t AnswerForceIp(const Gvcp::CommandPacket& command, WireRoom room);
    void ServeResend(const Gvcp::CommandPacket& command);
    std::uint16_t WriteRegisterFrom(const NET_ENDPOINT& sender, std::uint32_t address, std::uint32_t value);
    std::uint16_t WriteControl(const NET_ENDPOINT& sender, std::uint32_t value);
    std::uint16_t MayWrite(const NET_ENDPOINT& sender, std::uint64_t address) const;
    void AfterWrite(std::uint32_t address, std::uint32_t value);
    void AfterStreamWrite(unsigned channel, std::uint32_t reg, std::uint32_t value);
    void StartChannel(unsigned channel);
    void StopChannels();
    void Remember(const Gvcp::CommandPacket& command, std::size_t datagramSize);
    bool TakeRule(const SeenCommand& command, AckRule& rule);
    void SendFaulty(const AckRule& rule, std::uint8_t* ack, std::size_t size, const NET_ENDPOINT& to);
    void SleepUnlessStopped(unsigned ms);

    CameraConfig config_;
    UniqueFd socket_;
    UniqueFd foreignSocket_;
    ScriptedRegisters registers_;
    std::vector<std::unique_ptr<ScriptedStream>> streams_;

    mutable Mutex mutex_;
    CondVar stopped_;
    bool stop_ VX3_GUARDED_BY(mutex_) = false;
    NET_ENDPOINT controller_ VX3_GUARDED_BY(mutex_);
    std::chrono::steady_clock::time_point lastHeard_ VX3_GUARDED_BY(mutex_);
    std::vector<AckRule> rules_ VX3_GUARDED_BY(mutex_);
    std::vector<SeenCommand> seen_ VX3_GUARDED_BY(mutex_);
    std::vector<StreamScript> scripts_ VX3_GUARDED_BY(mutex_);
    std::atomic<bool> vanished_{false};
    std::atomic<bool> acquiring_{false};
    std::thread server_;
};

} // namespace Test
} // namespace VX3
