// Which serial ports this process has open: a lock on a file does not keep a process from itself when the
// same device has two names.
#pragma once

#include <sys/types.h>

namespace CLProtocol {

class PortRegister {
public:
    // Holds a device from its construction to its end; converts to false when it was held already.
    class Claim {
    public:
        explicit Claim(dev_t device);
        ~Claim();
        Claim(const Claim&) = delete;
        Claim& operator=(const Claim&) = delete;
        explicit operator bool() const { return held_; }

    private:
        const dev_t device_;
        const bool held_;
    };
};

} // namespace CLProtocol
