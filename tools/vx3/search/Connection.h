// A connected camera, given back on destruction; connecting fails with the likely reason in words.
#pragma once

#include "search/CameraSearch.h"
#include "vx3/genicam/IConfigurer.h"

#include <memory>
#include <string>

namespace VX3::Tool {

class Connection {
public:
    explicit Connection(FoundCamera found);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    IDevice& Device() const { return *found_.camera; }
    const FoundCamera& Found() const { return found_; }
    // Throw when the camera gave no usable description.
    IConfigurer& Configurer() const;
    std::shared_ptr<GenICam::INodeMap> Nodes() const;
    // Throws when there is no such feature.
    GenICam::INode& Node(const std::string& name) const;

private:
    FoundCamera found_;
};

// A camera's state in words.
std::string StateText(DEVICE_STATE state);

} // namespace VX3::Tool
