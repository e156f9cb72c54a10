// The conversation with one device over one serial port: drives the transaction machine with the port and the
// clock. Owned by the connection, or by a probe. Any thread; commands follow one another.
#pragma once

#include "platform/clprotocol/GenCpCodec.h"
#include "platform/clprotocol/PortError.h"
#include "platform/clprotocol/SerialPort.h"
#include "wire/Transaction.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace CLProtocol {

class GenCpLink {
public:
    using Clock = std::chrono::steady_clock;
    using Milliseconds = std::chrono::milliseconds;

    explicit GenCpLink(std::unique_ptr<SerialPort> port);

    // Whether a device answers at this rate: one attempt, which only reads. Begins the conversation anew.
    // False, too, at a rate that the port has not.
    [[nodiscard]] bool Ask(std::uint32_t rate);

    // Throw PortError. Longer accesses than a packet carries are split; others get their turn in between.
    void Read(std::uint64_t address, void* destination, std::size_t size);
    void Write(std::uint64_t address, const void* source, std::size_t size);
    std::uint32_t Read32(std::uint64_t address);
    std::uint64_t Read64(std::uint64_t address);
    void Write32(std::uint64_t address, std::uint32_t value);
    void Write64(std::uint64_t address, std::uint64_t value);

    // For a device that waits for the next command for a limited time only: attempts follow one another every
    // `attempt`, however long an answer may take. Zero: as the rules say.
    void HurryAttempts(Milliseconds attempt) { hurry_ = attempt; }

    // How long the device takes to answer, as it says itself.
    void SetResponseTime(std::uint32_t ms);
    Milliseconds ResponseTime() const { return Milliseconds(responseMs_.load()); }

    [[nodiscard]] bool SetBaud(std::uint32_t rate);
    std::uint32_t Baud() const;
    bool Supports(std::uint32_t rate);
    const std::string& Path() const { return port_->Path(); }

    // While this is true, waits end within 100 ms, with Abandoned, and so does every command. To be told
    // before the link is shared.
    void AbandonWhen(std::function<bool()> condition) { condition_ = std::move(condition); }
    // From then on every command ends with Silent. An empty time: no limit.
    void LimitUntil(Clock::time_point end) { limit_ = end.time_since_epoch().count(); }
    // When the device was last heard.
    Clock::time_point LastHeard() const { return Clock::time_point(Clock::duration(heard_.load())); }
    // Throws Abandoned when that comes first.
    void Pause(Milliseconds time);

private:
    using Transaction = VX3::Transaction;

    Transaction::Outcome Exchange(const GenCpCodec& codec, const VX3::WireRequest& request);
    void Drive(Transaction& transaction);
    void Demand(const VX3::WireRequest& request, void* destination);
    void DemandOnce(const VX3::WireRequest& request, void* destination);
    PortError ErrorOf(Transaction::Outcome outcome, const VX3::WireRequest& request) const;
    Transaction::Limits Limits(const VX3::WireRequest& request) const;
    Milliseconds TransferTime(std::size_t bytes) const;
    bool IsAbandoned() const { return condition_ && condition_(); }
    bool IsOver(Clock::time_point now) const;

    const std::unique_ptr<SerialPort> port_;
    std::function<bool()> condition_;
    std::atomic<Clock::rep> limit_{0};
    std::atomic<Clock::rep> heard_{0};
    std::atomic<std::uint32_t> responseMs_{GenCp::LongestResponseMs};
    std::atomic<Milliseconds> hurry_{Milliseconds(0)};
    mutable std::mutex mutex_; // one command at a time; guards all below
    std::uint16_t nextId_ = 0;
    VX3::WireAnswer answer_; // of the last exchange, within answerRoom_
    std::array<std::uint8_t, GenCp::MaxPacket> commandRoom_{};
    std::array<std::uint8_t, 2 * GenCp::MaxPacket> answerRoom_{};
};

} // namespace CLProtocol
