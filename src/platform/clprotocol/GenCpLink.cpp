#include "platform/clprotocol/GenCpLink.h"

#include "wire/RequestSplit.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <random>
#include <thread>

namespace CLProtocol {

using namespace GenCp;
using VX3::WireRequest;
using Outcome = VX3::Transaction::Outcome;

namespace {

// An end that the owner asks for is noticed after at most this long.
constexpr std::chrono::milliseconds Slice{100};
// For drivers, adapters and a loaded host.
constexpr std::chrono::milliseconds Margin{50};
// A camera may write flash memory meanwhile.
constexpr std::chrono::milliseconds LongestPending{30000};
constexpr unsigned BusyRetries = 5;
constexpr std::chrono::milliseconds BusyPause{40};
constexpr std::uint64_t BitsPerByte = 10; // start, eight, stop

WireRequest ReadRequest(std::uint64_t address, std::size_t count) {
    return {static_cast<std::uint16_t>(Command::ReadMem), address, {}, count};
}

WireRequest WriteRequest(std::uint64_t address, const void* source, std::size_t size) {
    return {static_cast<std::uint16_t>(Command::WriteMem),
            address,
            {static_cast<const std::uint8_t*>(source), size},
            0};
}

// A device repeats its last answer for the id of its last command, whoever sent that.
std::uint16_t FreshId() {
    std::random_device random;
    return static_cast<std::uint16_t>(1U + random() % 0xFFFEU);
}

} // namespace

GenCpLink::GenCpLink(std::unique_ptr<SerialPort> port) : port_(std::move(port)) {}

// Limits ---------------------------------------------------------------------------------------------------

void GenCpLink::SetResponseTime(std::uint32_t ms) {
    responseMs_ = std::min(ms, LongestResponseMs);
}

bool GenCpLink::IsOver(Clock::time_point now) const {
    const Clock::rep end = limit_;
    return end != 0 && now.time_since_epoch().count() >= end;
}

GenCpLink::Milliseconds GenCpLink::TransferTime(std::size_t bytes) const {
    return Milliseconds(bytes * BitsPerByte * 1000 / port_->Baud() + 1);
}

VX3::Transaction::Limits GenCpLink::Limits(const WireRequest& request) const {
    const Milliseconds transfer =
        TransferTime(GenCpCodec::CommandSize(request)) + TransferTime(GenCpCodec::AnswerSize(request));
    const Milliseconds hurry = hurry_;
    return {transfer + (hurry != Milliseconds(0) ? hurry : ResponseTime() + Margin), LongestPending};
}

void GenCpLink::Pause(Milliseconds time) {
    for (const auto end = Clock::now() + time; Clock::now() < end;) {
        if (IsAbandoned())
            throw PortError(Failure::Abandoned, Path() + ": not waited for any longer");
        std::this_thread::sleep_for(std::min<Clock::duration>(end - Clock::now(), Slice));
    }
}

// One command ----------------------------------------------------------------------------------------------

void GenCpLink::Drive(Transaction& transaction) {
    for (;;) {
        const auto now = Clock::now();
        if (IsAbandoned() || IsOver(now))
            transaction.Abandon();
        auto result = SerialPort::Result::Done;
        switch (transaction.Next(now)) {
        case Transaction::Step::Send:
            result = port_->Send(transaction.Command(), now + TransferTime(MaxPacket) + Margin);
            if (result == SerialPort::Result::TimedOut)
                transaction.SendFailed();
            break;
        case Transaction::Step::Wait: {
            auto until = std::min(transaction.Deadline(), now + Slice);
            if (const Clock::rep end = limit_; end != 0)
                until = std::min(until, Clock::time_point(Clock::duration(end)));
            std::size_t size = 0;
            result = port_->Receive(transaction.Room(), size, until);
            if (size != 0)
                transaction.Received(size, Clock::now());
            break;
        }
        case Transaction::Step::Finished:
            return;
        }
        if (result == SerialPort::Result::HungUp)
            throw PortError(Failure::HungUp, Path() + ": the port has gone");
    }
}

Outcome GenCpLink::Exchange(const GenCpCodec& codec, const WireRequest& request) {
    Transaction transaction(codec, {commandRoom_.data(), commandRoom_.size()},
                            {answerRoom_.data(), answerRoom_.size()});
    transaction.Start(request, nextId_, Limits(request));
    Drive(transaction);
    if (transaction.IdUsed())
        nextId_ = codec.Rules().NextId(nextId_);
    answer_ = transaction.Answer();
    if (answer_.kind != VX3::WireAnswer::Kind::Foreign)
        heard_ = Clock::now().time_since_epoch().count();
    return transaction.Result();
}

bool GenCpLink::Ask(std::uint32_t rate) {
    static const GenCpCodec once(1);
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!port_->SetBaud(rate))
        return false;
    port_->Discard();
    nextId_ = 0;
    const Outcome outcome = Exchange(once, ReadRequest(Register::Version, sizeof(std::uint32_t)));
    nextId_ = FreshId();
    return outcome == Outcome::Complete || outcome == Outcome::Refused;
}

PortError GenCpLink::ErrorOf(Outcome outcome, const WireRequest& request) const {
    char what[80];
    std::snprintf(what, sizeof(what), ": %s of %zu bytes at 0x%" PRIX64 " ",
                  request.data.size != 0 ? "write" : "read", request.data.size + request.count,
                  request.address);
    const std::string text = Path() + what;
    switch (outcome) {
    case Outcome::Refused: {
        char status[64];
        std::snprintf(status, sizeof(status), "was refused: %s (GenCP status 0x%04X)",
                      StatusName(answer_.status), answer_.status);
        return {Failure::Refused, text + status, answer_.status};
    }
    case Outcome::Malformed:
        return {Failure::Malformed, text + "was answered with another length"};
    case Outcome::Incomplete:
        return {Failure::Malformed, text + "was done in part only"};
    case Outcome::Unsendable:
        return {Failure::Argument, text + "does not fit the protocol"};
    case Outcome::Abandoned:
        if (IsAbandoned())
            return {Failure::Abandoned, text + "was not waited for any longer"};
        [[fallthrough]];
    default:
        return {Failure::Silent, text + "was not answered"};
    }
}

void GenCpLink::DemandOnce(const WireRequest& request, void* destination) {
    static const GenCpCodec codec;
    const std::lock_guard<std::mutex> lock(mutex_);
    const Outcome outcome = Exchange(codec, request);
    if (outcome != Outcome::Complete)
        throw ErrorOf(outcome, request);
    if (answer_.data.size != 0)
        std::memcpy(destination, answer_.data.data, answer_.data.size); // the codec compared the length
}

// A device that is busy with another command, its own or a lost host's, is asked again a little later.
void GenCpLink::Demand(const WireRequest& request, void* destination) {
    for (unsigned busy = 0;; ++busy) {
        try {
            DemandOnce(request, destination);
            return;
        } catch (const PortError& error) {
            if (error.Status() != AckStatus::Busy || busy == BusyRetries)
                throw;
        }
        Pause(BusyPause);
    }
}

// Memory ---------------------------------------------------------------------------------------------------

void GenCpLink::Read(std::uint64_t address, void* destination, std::size_t size) {
    const GenCpCodec codec;
    VX3::RequestSplit split(ReadRequest(address, size), codec.Rules());
    for (WireRequest piece; split.Next(piece);)
        Demand(piece, static_cast<std::uint8_t*>(destination) + split.Offset());
}

void GenCpLink::Write(std::uint64_t address, const void* source, std::size_t size) {
    const GenCpCodec codec;
    VX3::RequestSplit split(WriteRequest(address, source, size), codec.Rules());
    for (WireRequest piece; split.Next(piece);)
        Demand(piece, nullptr);
}

std::uint32_t GenCpLink::Read32(std::uint64_t address) {
    std::array<std::uint8_t, sizeof(std::uint32_t)> bytes{};
    Read(address, bytes.data(), bytes.size());
    return VX3::Wire::Load<std::uint32_t>(bytes.data());
}

std::uint64_t GenCpLink::Read64(std::uint64_t address) {
    std::array<std::uint8_t, sizeof(std::uint64_t)> bytes{};
    Read(address, bytes.data(), bytes.size());
    return VX3::Wire::Load<std::uint64_t>(bytes.data());
}

void GenCpLink::Write32(std::uint64_t address, std::uint32_t value) {
    std::array<std::uint8_t, sizeof(value)> bytes{};
    VX3::Wire::Store(bytes.data(), value);
    Write(address, bytes.data(), bytes.size());
}

void GenCpLink::Write64(std::uint64_t address, std::uint64_t value) {
    std::array<std::uint8_t, sizeof(value)> bytes{};
    VX3::Wire::Store(bytes.data(), value);
    Write(address, bytes.data(), bytes.size());
}

// Rate -----------------------------------------------------------------------------------------------------

bool GenCpLink::SetBaud(std::uint32_t rate) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return port_->SetBaud(rate);
}

std::uint32_t GenCpLink::Baud() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return port_->Baud();
}

bool GenCpLink::Supports(std::uint32_t rate) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return port_->Supports(rate);
}

} // namespace CLProtocol
