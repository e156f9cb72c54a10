// A connected camera, given back on destruction; connecting fails with the likely reason in words. While it
// lives, Ctrl-C ends what waits for the camera: at once where the verb looks at Interrupted, by force where
// it still waits a second later.
#pragma once

#include "search/CameraSearch.h"
#include "vx3/genicam/IConfigurer.h"

#include <atomic>
#include <memory>
#include <string>
#include <thread>

namespace VX3::Tool {

// What a verb does with the camera. One that only reads goes on beside another application that controls it.
enum class Use { Change, Read };

class Connection {
public:
    explicit Connection(FoundCamera found, Use use = Use::Change);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    IDevice& Device() const { return *found_.camera; }
    const FoundCamera& Found() const { return found_; }
    // Throw when the camera gave no usable description.
    IConfigurer& Configurer() const;
    std::shared_ptr<GenICam::INodeMap> Nodes() const;
    // After a failure of that feature: whether the camera answers no more, rather than refuses.
    bool IsGone(const std::string& feature) const;

private:
    void Connect(Use use);
    void ConnectToRead(const char* why);
    [[noreturn]] void Refuse(StatusCode code) const;
    void WatchInterrupts();

    FoundCamera found_;
    std::atomic<bool> leaving_{false};
    std::thread watch_;
};

// A camera's state in words.
std::string StateText(DEVICE_STATE state);

} // namespace VX3::Tool
