#include "device/ImageDelivery.h"

#include "core/ClientCall.h"
#include "device/CallbackScope.h"
#include "vx3/core/Logger.h"

#include <chrono>
#include <exception>
#include <thread>
#include <utility>

namespace VX3 {

namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds MaxWait(500);
// Above a thousand frames a second the next one is near, and waking a sleeper for each would cost the receive
// thread more than the frame: the consumer naps instead and finds a few.
constexpr std::chrono::milliseconds FastGap(1);
constexpr std::chrono::microseconds Nap(20);

bool Qualifies(const IImage& image, FrameType type) {
    const ImageInfo* info = image.GetImageInfo();
    switch (type) {
    case FrameType::All:
        return true;
    case FrameType::Resent:
        return info != nullptr && info->statusC != 0;
    case FrameType::Incomplete:
        return info != nullptr && info->lostPackets != 0;
    }
    return false;
}

} // namespace

ImageDelivery::ImageDelivery(std::shared_ptr<ParentLink> parent, unsigned int streamIndex)
    : parent_(std::move(parent)), streamIndex_(streamIndex) {}

void ImageDelivery::Consume(const std::atomic<bool>& running) {
    auto previous = steady_clock::now() - FastGap;
    while (running) {
        if (queue_.IsEmpty() && steady_clock::now() - previous < FastGap)
            std::this_thread::sleep_for(Nap);
        std::shared_ptr<IImage> image;
        if (!queue_.Pop(image, MaxWait, [&] { return !running; }))
            continue;
        previous = steady_clock::now();
        Deliver(image);
    }
    // What nobody will be called for goes back to its pool.
    queue_.Clear();
}

void ImageDelivery::Deliver(const std::shared_ptr<IImage>& image) {
    std::shared_ptr<const Client> client;
    {
        MutexLock lock(mutex_);
        client = client_;
        if (!client)
            return;
        Remember(image);
    }
    const ClientCall call;
    if (!call)
        return;
    const CallbackScope scope;
    try {
        client->callback(image, parent_->Get(), streamIndex_, image->MiscValue(), client->userData);
    } catch (const std::exception& error) {
        VxLoggerLog(LogLevel::Error, "SDK", "Image callback: %s", error.what());
    } catch (...) {
        VxLoggerLog(LogLevel::Error, "SDK", "Image callback: unknown exception");
    }
}

void ImageDelivery::Remember(const std::shared_ptr<IImage>& image) {
    if (historyCount_ == 0 || !Qualifies(*image, historyType_))
        return;
    history_.push_back(image);
    while (history_.size() > historyCount_)
        history_.pop_front();
}

void ImageDelivery::Prepare() {
    queue_.Clear();
    std::shared_ptr<const Client> client; // destroyed outside the lock
    MutexLock lock(mutex_);
    client_.swap(client);
}

void ImageDelivery::SetCallback(ImageCallback callback, void* userData) {
    ClientCall::CloseAtExit();
    std::shared_ptr<const Client> client;
    if (callback)
        client = std::make_shared<const Client>(Client{std::move(callback), userData});
    std::deque<std::shared_ptr<IImage>> forgotten;
    MutexLock lock(mutex_);
    client_.swap(client);
    forgotten.swap(history_);
}

void ImageDelivery::SetHistory(unsigned int count, FrameType type) {
    std::deque<std::shared_ptr<IImage>> forgotten;
    MutexLock lock(mutex_);
    forgotten.swap(history_);
    historyCount_ = count;
    historyType_ = type;
}

std::shared_ptr<IImage> ImageDelivery::HistoryFrame(unsigned int index) const {
    MutexLock lock(mutex_);
    return index < history_.size() ? history_[index] : nullptr;
}

} // namespace VX3
