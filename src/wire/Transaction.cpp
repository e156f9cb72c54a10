#include "wire/Transaction.h"

#include <algorithm>
#include <cstring>

namespace VX3 {

namespace {

Transaction::Outcome OutcomeOf(WireAnswer::Kind kind) {
    switch (kind) {
    case WireAnswer::Kind::Complete:
        return Transaction::Outcome::Complete;
    case WireAnswer::Kind::Refused:
        return Transaction::Outcome::Refused;
    case WireAnswer::Kind::Incomplete:
        return Transaction::Outcome::Incomplete;
    default:
        return Transaction::Outcome::Malformed;
    }
}

} // namespace

void Transaction::Start(const WireRequest& request, std::uint16_t id, const Limits& limits) {
    request_ = request;
    id_ = id;
    limits_ = limits;
    state_ = State::Sending;
    outcome_ = Outcome::Running;
    attempts_ = 0;
    command_ = {};
    pendingSeen_ = false;
    pendingCut_ = false;
    filled_ = 0;
    answer_ = {};
    packet_ = {};
}

void Transaction::Await(const WireRequest& request, std::uint16_t id, const Limits& limits) {
    Start(request, id, limits);
    attempts_ = codec_.Rules().attempts;
    state_ = State::Sent;
}

Transaction::Step Transaction::Next(Time now) {
    if (state_ == State::Sent)
        BeginWait(now);
    if (state_ == State::Waiting && now >= deadline_) {
        // A packet that is not whole after all this time never was one; the answer may stand behind its
        // start.
        while (!Finished() && filled_ != 0)
            Scan(1, now);
        if (!Finished() && now >= deadline_)
            EndAttempt();
    }
    if (state_ == State::Sending) {
        command_ = codec_.Encode(commandRoom_, request_, id_, attempts_);
        if (command_.size == 0) {
            Finish(Outcome::Unsendable);
        } else {
            ++attempts_;
            state_ = State::Sent;
            return Step::Send;
        }
    }
    return Finished() ? Step::Finished : Step::Wait;
}

void Transaction::SendFailed() {
    if (state_ == State::Sent)
        EndAttempt();
}

void Transaction::BeginWait(Time now) {
    deadline_ = now + limits_.attempt;
    state_ = State::Waiting;
}

void Transaction::EndAttempt() {
    if (pendingCut_ || attempts_ >= codec_.Rules().attempts)
        Finish(Outcome::TimedOut);
    else
        state_ = State::Sending;
}

void Transaction::Finish(Outcome outcome) {
    outcome_ = outcome;
    state_ = State::Finished;
}

bool Transaction::IdUsed() const {
    if (answer_.kind != WireAnswer::Kind::Foreign)
        return true;
    return attempts_ != 0 && (outcome_ == Outcome::Abandoned || !codec_.Rules().silenceKeepsId);
}

void Transaction::Received(std::size_t size, Time now) {
    if (state_ == State::Sent)
        BeginWait(now);
    if (state_ != State::Waiting)
        return;
    filled_ += std::min(size, answerRoom_.size - filled_);
    Scan(0, now);
    // A packet that does not fit the room is none.
    while (!Finished() && filled_ != 0 && filled_ == answerRoom_.size)
        Scan(1, now);
}

// Takes the packets that stand whole behind the first `from` bytes and keeps the beginning of another.
void Transaction::Scan(std::size_t from, Time now) {
    std::size_t at = from;
    while (at < filled_) {
        const WireFrame frame = codec_.FrameOf({answerRoom_.data + at, filled_ - at});
        at += std::min(frame.skip, filled_ - at);
        if (frame.size == 0 || frame.size > filled_ - at)
            break;
        Take({answerRoom_.data + at, frame.size}, now);
        if (Finished())
            return; // the room stays as it is, for the answer is seen there
        at += frame.size;
    }
    filled_ -= at;
    if (filled_ != 0)
        std::memmove(answerRoom_.data, answerRoom_.data + at, filled_);
}

void Transaction::Take(WireBytes packet, Time now) {
    const WireAnswer answer = codec_.Judge(packet, request_);
    if (answer.kind == WireAnswer::Kind::Foreign)
        return;
    const bool ours = answer.id == id_;
    if (answer.kind == WireAnswer::Kind::Pending) {
        if (ours || !codec_.Rules().pendingCarriesId)
            Extend(answer.pendingMs, now);
        return;
    }
    if (!ours)
        return;
    answer_ = answer;
    packet_ = packet;
    Finish(OutcomeOf(answer.kind));
}

// The device's word replaces the deadline, sooner or later than it was. Beyond the limit it changes nothing.
void Transaction::Extend(std::uint16_t pendingMs, Time now) {
    if (!pendingSeen_)
        pendingEnd_ = now + limits_.pending;
    pendingSeen_ = true;
    const Time wanted = now + Duration(pendingMs);
    pendingCut_ = wanted > pendingEnd_;
    deadline_ = pendingCut_ ? std::max(deadline_, pendingEnd_) : wanted;
}

} // namespace VX3
