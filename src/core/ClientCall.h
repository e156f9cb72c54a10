// The passage from the library's threads into the client's code: image, log, node and monitoring callbacks.
// When the process ends it is closed before the first object with static storage duration goes, and calls
// that are under way are waited for: what a callback uses is there for as long as it runs.
#pragma once

namespace VX3 {

// One call. Nothing may be called when it is false.
class ClientCall {
public:
    ClientCall();
    ~ClientCall();
    ClientCall(const ClientCall&) = delete;
    ClientCall& operator=(const ClientCall&) = delete;
    explicit operator bool() const { return open_; }

    // Where a client hands over a callback, or the object that will call it, on the client's thread: closes
    // the passage at exit. Cheap to call again.
    static void CloseAtExit();

private:
    bool open_;
};

} // namespace VX3
