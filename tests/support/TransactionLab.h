// Drives one transaction from memory, under a clock of its own: packets arrive at given milliseconds after
// the start, and nothing else happens.
#pragma once

#include "support/Hex.h"
#include "wire/Transaction.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace VX3::Test {

struct Arrival {
    long ms = 0;
    Bytes bytes;
};

class TransactionLab {
public:
    explicit TransactionLab(const ITransactionCodec& codec, std::size_t answerRoom = 580)
        : commandRoom_(580), answerRoom_(answerRoom), machine(codec, Room(commandRoom_), Room(answerRoom_)) {}

    Transaction::Outcome Run(const WireRequest& request, std::uint16_t id, const Transaction::Limits& limits,
                             const std::vector<Arrival>& arrivals = {}) {
        machine.Start(request, id, limits);
        return Finish(arrivals);
    }
    Transaction::Outcome Finish(const std::vector<Arrival>& arrivals) {
        sent.clear();
        sentMs.clear();
        endMs = 0;
        auto next = arrivals.begin();
        for (;;) {
            switch (machine.Next(At(endMs))) {
            case Transaction::Step::Send:
                sent.emplace_back(machine.Command().data, machine.Command().data + machine.Command().size);
                sentMs.push_back(endMs);
                break;
            case Transaction::Step::Wait:
                if (next != arrivals.end() && At(next->ms) < machine.Deadline()) {
                    endMs = std::max(endMs, next->ms);
                    Feed((next++)->bytes);
                } else {
                    endMs = std::max(endMs, Ms(machine.Deadline()));
                }
                break;
            case Transaction::Step::Finished:
                return machine.Result();
            }
        }
    }
    Bytes Data() const {
        const WireBytes data = machine.Answer().data;
        return Bytes(data.data, data.data + data.size);
    }

private:
    static WireRoom Room(Bytes& bytes) { return {bytes.data(), bytes.size()}; }
    static Transaction::Time At(long ms) {
        return Transaction::Time() + std::chrono::hours(1) + Transaction::Duration(ms);
    }
    static long Ms(Transaction::Time time) {
        return static_cast<long>(std::chrono::duration_cast<Transaction::Duration>(time - At(0)).count());
    }
    // As much at a time as the machine takes.
    void Feed(const Bytes& bytes) {
        for (std::size_t done = 0; done < bytes.size();) {
            const WireRoom room = machine.Room();
            const std::size_t size = std::min(room.size, bytes.size() - done);
            if (size != 0)
                std::memcpy(room.data, bytes.data() + done, size);
            machine.Received(size, At(endMs));
            done += size;
            if (machine.Result() != Transaction::Outcome::Running)
                return;
        }
    }

    Bytes commandRoom_;
    Bytes answerRoom_;

public:
    Transaction machine;
    std::vector<Bytes> sent;
    std::vector<long> sentMs;
    long endMs = 0;
};

} // namespace VX3::Test
