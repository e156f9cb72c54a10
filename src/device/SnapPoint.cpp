#include "device/SnapPoint.h"

#include <utility>

namespace VX3 {

void SnapPoint::Offer(const std::shared_ptr<IImage>& image) {
    if (waiting_.load(std::memory_order_acquire) == 0)
        return;
    std::shared_ptr<IImage> older = image; // goes back to its pool outside the lock
    {
        MutexLock lock(mutex_);
        newest_.swap(older);
        ++number_;
    }
    offered_.NotifyAll();
}

std::shared_ptr<IImage> SnapPoint::Next(std::chrono::milliseconds timeout,
                                        const std::function<bool()>& ended) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    std::shared_ptr<IImage> image;
    std::shared_ptr<IImage> forgotten;
    MutexLock lock(mutex_);
    ++waiting_;
    const std::uint64_t before = number_;
    while (number_ == before && !ended())
        if (!offered_.WaitUntil(mutex_, deadline))
            break;
    if (number_ != before)
        image = newest_;
    if (--waiting_ == 0)
        forgotten = std::move(newest_);
    return image;
}

void SnapPoint::Wake() {
    MutexLock lock(mutex_);
    offered_.NotifyAll();
}

} // namespace VX3
