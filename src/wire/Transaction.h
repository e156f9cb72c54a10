// One command and its answer, without socket and clock: bytes and the time go in; bytes to send, deadlines
// and the result come out. Knows ids, time-outs, retries, pending answers, and packets that arrive in pieces.
// Whoever owns the carrier drives it:
//
//     transaction.Start(request, id, limits);
//     for (;;) switch (transaction.Next(now)) {
//         case Step::Send:     send transaction.Command();                     break;
//         case Step::Wait:     receive into transaction.Room() until transaction.Deadline(),
//                              then transaction.Received(size, now);           break;
//         case Step::Finished: look at transaction.Result() and Answer();      return;
//     }
//
// It owns no memory and allocates none; it may be started again and again. Used by one thread at a time.
#pragma once

#include "wire/TransactionCodec.h"

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace VX3 {

class Transaction {
public:
    using Time = std::chrono::steady_clock::time_point;
    using Duration = std::chrono::milliseconds;

    struct Limits {
        Duration attempt{0}; // wait for an answer to one attempt
        Duration pending{0}; // longest that pending answers put off the end, all attempts together
    };
    // The limit for pending answers of a device that announces `deviceTimeout` itself (0: unknown).
    static constexpr Duration PendingLimit(Duration deviceTimeout) {
        constexpr Duration Least{5000};
        constexpr Duration Most{30000};
        const Duration wanted = 3 * deviceTimeout;
        return wanted < Least ? Least : wanted > Most ? Most : wanted;
    }

    enum class Step { Send, Wait, Finished };
    enum class Outcome {
        Running,
        Complete,
        Refused,    // see Answer().status
        Malformed,  // see WireAnswer::Kind
        Incomplete, // likewise
        TimedOut,   // no answer to any attempt, or nothing but pending ones up to the limit
        Unsendable, // the request makes no packet
        Abandoned,  // by Abandon
    };

    // Codec and rooms must outlive the transaction. The answer's room must hold the longest packet.
    Transaction(const ITransactionCodec& codec, WireRoom commandRoom, WireRoom answerRoom)
        : codec_(codec), commandRoom_(commandRoom), answerRoom_(answerRoom) {}

    // What arrived before is forgotten: nothing in it can answer this command.
    void Start(const WireRequest& request, std::uint16_t id, const Limits& limits);
    // The same for a command that somebody else has sent: nothing is sent, and its wait is the only one.
    void Await(const WireRequest& request, std::uint16_t id, const Limits& limits);

    // What to do now. A wait begins with the first call after the send.
    Step Next(Time now);
    WireBytes Command() const { return command_; }
    Time Deadline() const { return deadline_; }
    // Where the carrier puts what arrives next; never empty while the transaction runs.
    WireRoom Room() const { return {answerRoom_.data + filled_, answerRoom_.size - filled_}; }
    // So many bytes of Room() were filled: one datagram, or any piece of a stream.
    void Received(std::size_t size, Time now);
    // After Step::Send: the carrier was not ready for the bytes. Counts as an attempt that was not answered.
    void SendFailed();
    // The owner does not wait any longer. Changes nothing once finished.
    void Abandon() {
        if (!Finished())
            Finish(Outcome::Abandoned);
    }

    Outcome Result() const { return outcome_; }
    // The judged answer and its whole packet, in the answer's room until the next start; empty without one.
    const WireAnswer& Answer() const { return answer_; }
    WireBytes Packet() const { return packet_; }
    // Whether the next command of the conversation takes a new id (Rules().NextId). True after any answer; an
    // abandoned command may have reached the device, and a repeated id would name the next one its
    // repetition.
    bool IdUsed() const;

private:
    enum class State { Sending, Sent, Waiting, Finished };

    bool Finished() const { return state_ == State::Finished; }
    void Finish(Outcome outcome);
    void BeginWait(Time now);
    void EndAttempt();
    void Scan(std::size_t from, Time now);
    void Take(WireBytes packet, Time now);
    void Extend(std::uint16_t pendingMs, Time now);

    const ITransactionCodec& codec_;
    const WireRoom commandRoom_;
    const WireRoom answerRoom_;
    WireRequest request_;
    Limits limits_;
    std::uint16_t id_ = 0;
    State state_ = State::Finished;
    Outcome outcome_ = Outcome::Running;
    unsigned attempts_ = 0; // made so far
    WireBytes command_;
    Time deadline_;
    bool pendingSeen_ = false;
    bool pendingCut_ = false; // the device asked for more than the limit leaves
    Time pendingEnd_;
    std::size_t filled_ = 0; // bytes of the answer's room that await the rest of their packet
    WireAnswer answer_;
    WireBytes packet_;
};

} // namespace VX3
