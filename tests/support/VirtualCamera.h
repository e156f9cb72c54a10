// A virtual camera through the C interface, with everything freed in order at the end of a test.
#pragma once

#include "vx3/vx3.h"

#include <utility>

namespace VX3::Test {

// The feature that sets the virtual camera's frame time in milliseconds.
constexpr const char* FrameTimeFeature = "FrameTime";

class VirtualCamera {
public:
    explicit VirtualCamera(unsigned int index)
        : manager_(Manager_Create(VX3_FAMILY_VIRTUAL)),
          device_(Manager_GetDeviceByIndex(manager_, 0, VX3_FAMILY_ALL)),
          camera_(Device_GetSubDeviceByIndex(device_, index)) {}
    VirtualCamera(const VirtualCamera&) = delete;
    VirtualCamera& operator=(const VirtualCamera&) = delete;
    ~VirtualCamera() {
        DestroyHandle();
        Device_Destory(device_);
        Manager_Destory(manager_);
    }

    SubDevice* Get() const { return camera_; }
    Device* Interface() const { return device_; }
    Manager* Owner() const { return manager_; }
    void DestroyHandle() { SubDevice_Destory(std::exchange(camera_, nullptr)); }

private:
    Manager* manager_;
    Device* device_;
    SubDevice* camera_;
};

} // namespace VX3::Test
