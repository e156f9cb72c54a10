// What every example begins with: the first camera of the virtual interface (or of the families asked for).
#pragma once

#include <chrono>
#include <memory>
#include <thread>
#include <vector>
#include <vx3/device/IDevice.h>
#include <vx3/library/System.h>

// Waits until an interface has looked for its cameras, at most `limit`.
inline std::vector<std::shared_ptr<VX3::IDevice>> FindCameras(VX3::IDevice& interfaceDevice,
                                                              std::chrono::milliseconds limit) {
    (void)interfaceDevice.MonitorSubDevices(true, 10000, 9500, nullptr);
    const auto deadline = std::chrono::steady_clock::now() + limit;
    std::vector<std::shared_ptr<VX3::IDevice>> cameras;
    while (cameras.empty() && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        for (const auto& weak : interfaceDevice.SubDevices())
            if (auto camera = weak.lock())
                cameras.push_back(std::move(camera));
    }
    return cameras;
}

inline std::shared_ptr<VX3::IDevice> FirstCamera(VX3::IManager& manager) {
    for (unsigned int i = 0; auto device = manager.GetDevice(i, VX3::IntfDevType::All); ++i) {
        auto cameras = FindCameras(*device, std::chrono::milliseconds(2000));
        if (!cameras.empty())
            return cameras.front();
    }
    return nullptr;
}
