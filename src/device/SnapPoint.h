// Where threads wait for a stream's next image: all that wait get the same one. Any thread.
#pragma once

#include "vx3/core/Mutex.h"
#include "vx3/image/IImage.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

namespace VX3 {

class SnapPoint {
public:
    // Costs nothing while nobody waits.
    void Offer(const std::shared_ptr<IImage>& image) VX3_EXCLUDES(mutex_);
    // Null after `timeout`, and as soon as Wake finds `ended`.
    std::shared_ptr<IImage> Next(std::chrono::milliseconds timeout, const std::function<bool()>& ended)
        VX3_EXCLUDES(mutex_);
    void Wake() VX3_EXCLUDES(mutex_);

private:
    std::atomic<unsigned int> waiting_{0};
    Mutex mutex_;
    CondVar offered_;
    std::uint64_t number_ VX3_GUARDED_BY(mutex_) = 0;       // of the newest image
    std::shared_ptr<IImage> newest_ VX3_GUARDED_BY(mutex_); // held only while somebody waits
};

} // namespace VX3
