// The events of a connected camera's local module: one thread waits for each kind that the producer has.
// Owned by the device while it is connected.
#pragma once

#include "device/ThreadEx.h"
#include "gentl/GenTLAPI.h"
#include "gentl/GenTLHandle.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace VX3 {

class GenTLEvents {
public:
    struct Event {
        std::int32_t type = 0;   // GenTL::EVENT_TYPE
        std::string id;          // a feature's name, or a number in hexadecimal
        std::string value;       // text, or bytes
        std::int64_t number = 0; // the id where it is one
    };

    // `listener` runs on the waiting threads, and may run once more while this object is destroyed. A kind
    // that the producer does not have is none.
    GenTLEvents(std::shared_ptr<GenTLAPI> producer, const GenTLHandle& module,
                std::function<void(const Event&)> listener);
    // A wait from which the producer does not return is left alone.
    ~GenTLEvents();

    // Event ids in hexadecimal are the same whatever their case and leading zeros.
    static bool IsSameId(const std::string& a, const std::string& b);

private:
    struct Waiter;

    void Register(std::int32_t type);

    const std::shared_ptr<GenTLAPI> producer_;
    const GenTLHandle module_;
    const std::function<void(const Event&)> listener_;
    std::vector<std::shared_ptr<Waiter>> waiters_;
};

} // namespace VX3
