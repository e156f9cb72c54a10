// A CameraLink camera on a pseudo terminal: registers, a manifest with a description, a baud rate of its own,
// and faults as data. It builds its packets without the library's codec, by the letter of the standard.
//
// A pseudo terminal carries bytes at any rate. So the camera reads the host's rate from the terminal's other
// side, and where it is not the camera's own, swallows what comes and sends noise.
#pragma once

#include "support/GenCpMemory.h"
#include "support/Hex.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace VX3::Test {

// Each number says how often; each is used up.
struct GenCpFaults {
    int dropCommands = 0;
    int dropAnswers = 0;
    int flipHeaders = 0; // of answers, a bit each
    int flipPayloads = 0;
    int noise = 0;       // before answers
    int singleBytes = 0; // answers that come byte by byte
    int stale = 0;       // answers of an older id come first
    int pending = 0;     // pending answers before one
    int pendingMs = 300;
    int late = 0; // answers that take `lateMs`
    int lateMs = 0;
    int busy = 0;
    int shortAnswers = 0; // a byte less than asked for
    int vanishAfter = -1; // bytes of the next answer: then the line is cut
    bool silent = false;  // answers nothing until it is taken back
    bool refuseRate = false;
    bool forgetConfirmation = false;
    bool refuseControl = false;
    bool slowWire = false; // bytes take their time
};

struct GenCpCommand {
    std::uint16_t flags = 0;
    std::uint16_t command = 0;
    std::uint16_t id = 0;
    std::uint64_t address = 0;
    std::uint32_t rate = 0;
};

class GenCpCamera {
public:
    static constexpr std::uint64_t Scratch = GenCpMemory::Scratch;
    static constexpr std::uint64_t ReadOnly = GenCpMemory::ReadOnly;
    static constexpr std::uint64_t Sbrm = GenCpMemory::Sbrm;

    explicit GenCpCamera(GenCpCameraData data = {});
    ~GenCpCamera();
    GenCpCamera(const GenCpCamera&) = delete;
    GenCpCamera& operator=(const GenCpCamera&) = delete;

    const std::string& Port() const { return port_; }
    int Slave() const { return slave_; } // to look at the terminal's settings
    void Set(const GenCpFaults& faults);
    std::vector<GenCpCommand> TakeCommands();
    std::uint32_t Rate();
    std::uint32_t Register32(std::uint64_t address);
    bool HasControl() { return Register32(0x204) == 1; }
    std::size_t SwallowedBytes() const { return swallowed_; }
    // Cuts the line, as an adapter that is pulled does.
    void Unplug();

private:
    using Clock = std::chrono::steady_clock;

    void Run();
    void Tick();
    void Receive();
    bool TakePacket();
    void Execute(const Bytes& packet);
    Bytes Answered(const Bytes& packet, const GenCpCommand& command);
    Bytes ReadAnswer(const Bytes& packet, const GenCpCommand& command);
    Bytes WriteAnswer(const Bytes& packet, const GenCpCommand& command);
    std::uint16_t WriteRegisters(std::uint64_t address, const Bytes& data);
    void ChangeRate(std::uint32_t bit);
    void Reply(const Bytes& answer, const GenCpCommand& command);
    void Send(const Bytes& bytes);
    void Cut();
    void BackToDefaults();

    const GenCpCameraData data_;
    int master_ = -1;
    int slave_ = -1; // held, so that a host may close the line without ending it
    std::string port_;
    std::mutex mutex_; // guards all below
    GenCpFaults faults_;
    GenCpMemory memory_;
    std::vector<GenCpCommand> commands_;
    std::uint32_t rate_ = 0;
    std::uint32_t oldRate_ = 0;
    bool awaitsConfirmation_ = false;
    Clock::time_point confirmBy_;
    Clock::time_point lastAccess_;
    Clock::time_point busyUntil_;
    Bytes arrived_;
    std::uint16_t lastId_ = 0;
    Bytes lastAnswer_;
    std::atomic<std::size_t> swallowed_{0};
    std::atomic<bool> run_{true};
    std::atomic<bool> unplug_{false};
    std::thread thread_;
};

} // namespace VX3::Test
