// What every operation on a serial port throws: the kind of failure, and words that name port and device.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace CLProtocol {

enum class Failure {
    Unusable,    // the port cannot be opened, or is none
    InUse,       // another program, or this one, holds the port
    HungUp,      // the port has gone
    Silent,      // no answer to any attempt
    Refused,     // the device answered with `Status()`
    Malformed,   // it answered something that is none
    OtherDevice, // not the device that was asked for
    Abandoned,   // the owner does not wait any longer
    Argument,    // what the protocol cannot carry, or nobody has
};

class PortError : public std::runtime_error {
public:
    PortError(Failure failure, const std::string& text, std::uint16_t status = 0)
        : std::runtime_error(text), failure_(failure), status_(status) {}

    Failure Kind() const { return failure_; }
    // Of GenCP, for Refused.
    std::uint16_t Status() const { return status_; }
    // Nobody is there any more.
    bool IsLoss() const { return failure_ == Failure::Silent || failure_ == Failure::HungUp; }

private:
    Failure failure_;
    std::uint16_t status_;
};

} // namespace CLProtocol
