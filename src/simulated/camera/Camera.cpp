#include "vx3/simulated/Camera.h"

#include "gev/protocol/Bootstrap.h"
#include "simulated/camera/CameraTarget.h"
#include "simulated/camera/GvcpServer.h"
#include "simulated/camera/PixelPattern.h"

#include <atomic>
#include <unistd.h>

namespace VX3 {
namespace Simulated {

namespace {

constexpr int MostAddressesTried = 100;

// A different loopback address for every camera of every process: those that run side by side never meet.
std::uint32_t NextLoopbackAddress() {
    static std::atomic<std::uint32_t> counter{0};
    const std::uint32_t mixed = (static_cast<std::uint32_t>(::getpid()) * 251 + counter++) * 2654435761U;
    return 0x7F010000U + (mixed >> 9) % 0xFD0000U + 1;
}

} // namespace

class Camera::Parts {
public:
    explicit Parts(CameraConfig given)
        : config_(std::move(given)),
          chooseIp_(config_.ip == 0),
          streams(registers, config_),
          target_(registers, streams, config_.tellsPrimaryApplication),
          server(target_, config_.requiresControl, config_.rememberedCommands) {
        Reset();
    }
    ~Parts() { Stop(); }

    StatusCode Start() VX3_EXCLUDES(mutex_) {
        MutexLock lock(mutex_);
        if (running_)
            return Status::WrongState;
        if (!Bind() || !streams.Open(config_.bindAnyAddress ? 0 : config_.ip)) {
            server.Stop();
            return Status::OpenFailed;
        }
        config_.gvcpPort = server.Port();
        Reset();
        streams.SetPaused(false);
        server.Start();
        running_ = true;
        return Status::Ok;
    }
    void Stop() VX3_EXCLUDES(mutex_) {
        MutexLock lock(mutex_);
        if (!running_)
            return;
        running_ = false;
        server.Stop();
        streams.Close();
    }
    bool IsRunning() const VX3_EXCLUDES(mutex_) {
        MutexLock lock(mutex_);
        return running_;
    }
    std::uint32_t Ip() const VX3_EXCLUDES(mutex_) {
        MutexLock lock(mutex_);
        return config_.ip;
    }
    std::uint16_t Port() const VX3_EXCLUDES(mutex_) {
        MutexLock lock(mutex_);
        return config_.gvcpPort;
    }
    void Reboot() VX3_EXCLUDES(mutex_) {
        MutexLock lock(mutex_);
        server.ForgetController();
        Reset();
    }

private:
    bool Bind() VX3_REQUIRES(mutex_) {
        for (int attempt = 0; attempt < (chooseIp_ ? MostAddressesTried : 1); ++attempt) {
            if (chooseIp_)
                config_.ip = NextLoopbackAddress();
            if (server.Bind(config_.bindAnyAddress ? 0 : config_.ip, config_.gvcpPort))
                return true;
        }
        return false;
    }
    void Reset() VX3_REQUIRES(mutex_) {
        PowerUp(registers, config_);
        streams.ReportPorts();
    }

    mutable Mutex mutex_;
    CameraConfig config_ VX3_GUARDED_BY(mutex_);
    const bool chooseIp_;
    bool running_ VX3_GUARDED_BY(mutex_) = false;

public: // each of them safe to use from any thread
    RegisterFile registers;
    StreamChannels streams;

private:
    CameraTarget target_;

public:
    GvcpServer server;
};

Camera::Camera(CameraConfig config) : parts_(std::make_unique<Parts>(std::move(config))) {}

Camera::~Camera() = default;

StatusCode Camera::Start() {
    return parts_->Start();
}

void Camera::Stop() {
    parts_->Stop();
}

bool Camera::IsRunning() const {
    return parts_->IsRunning();
}

std::uint32_t Camera::Ip() const {
    return parts_->Ip();
}

std::uint16_t Camera::GvcpPort() const {
    return parts_->Port();
}

std::uint32_t Camera::Register(std::uint32_t address) const {
    return parts_->registers.Value(address);
}

StatusCode Camera::SetRegister(std::uint32_t address, std::uint32_t value) {
    return parts_->registers.SetValue(address, value) ? Status::Ok : Status::NotFound;
}

StatusCode Camera::ReadMemory(std::uint64_t address, void* destination, std::size_t count) const {
    const WireRoom room{static_cast<std::uint8_t*>(destination), count};
    return parts_->registers.Read(address, room) ? Status::Ok : Status::NotFound;
}

StatusCode Camera::WriteMemory(std::uint64_t address, const void* source, std::size_t count) {
    const WireBytes bytes{static_cast<const std::uint8_t*>(source), count};
    return parts_->registers.Write(address, bytes) ? Status::Ok : Status::NotFound;
}

void Camera::AddAckRule(const AckRule& rule) {
    parts_->server.Faults().Add(rule);
}

std::vector<SeenCommand> Camera::Seen() const {
    return parts_->server.Log().All();
}

void Camera::ClearSeen() {
    parts_->server.Log().Clear();
}

StatusCode Camera::SetStreamScript(const StreamScript& script, unsigned channel) {
    return parts_->streams.SetScript(channel, script) ? Status::Ok : Status::NotFound;
}

StatusCode Camera::StartStream(const NET_ENDPOINT& destination, unsigned channel) {
    if (channel >= MaxChannels)
        return Status::NotFound;
    (void)SetRegister(Bootstrap::StreamRegister(Bootstrap::StreamDestination, channel), destination.ip);
    (void)SetRegister(Bootstrap::StreamRegister(Bootstrap::StreamPort, channel), destination.port);
    return parts_->streams.Start(channel);
}

void Camera::StopStream(unsigned channel) {
    if (const auto stream = parts_->streams.At(channel))
        stream->Stop();
}

bool Camera::WaitStreamDone(std::chrono::milliseconds timeout, unsigned channel) {
    const auto stream = parts_->streams.At(channel);
    return stream == nullptr || stream->WaitDone(timeout);
}

StreamCounts Camera::Counts(unsigned channel) const {
    const auto stream = parts_->streams.At(channel);
    return stream != nullptr ? stream->Counts() : StreamCounts{};
}

std::map<PacketAddress, unsigned> Camera::ResendRequests(unsigned channel) const {
    const auto stream = parts_->streams.At(channel);
    return stream != nullptr ? stream->ResendRequests() : std::map<PacketAddress, unsigned>{};
}

std::size_t Camera::OpeningDatagram(unsigned channel) {
    const auto stream = parts_->streams.At(channel);
    return stream != nullptr ? stream->TakeNewestDatagram() : 0;
}

const std::uint8_t* Camera::ExpectedData(std::uint64_t blockId, std::size_t size) {
    return PixelPattern::Of(blockId, size);
}

void Camera::Vanish() {
    parts_->server.SetSilent(true);
    parts_->streams.SetPaused(true);
}

void Camera::Return(bool rebooted) {
    if (rebooted)
        parts_->Reboot();
    parts_->streams.SetPaused(false);
    parts_->server.SetSilent(false);
}

} // namespace Simulated
} // namespace VX3
