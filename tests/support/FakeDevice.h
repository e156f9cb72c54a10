// A camera and a stream without transport: tests script their answers, insert images and see what was called.
#pragma once

#include "device/GenIDevice.h"
#include "device/StreamAbs.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/Mutex.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace VX3::Testing {

// True as soon as `condition` holds, at the latest after `timeout`.
template <typename Condition>
bool Eventually(Condition condition, std::chrono::milliseconds timeout = std::chrono::seconds(5)) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// Calls in the order they came, from any thread.
class CallLog {
public:
    void Add(std::string call) VX3_EXCLUDES(mutex_) {
        MutexLock lock(mutex_);
        calls_.push_back(std::move(call));
    }
    std::vector<std::string> Take() VX3_EXCLUDES(mutex_) {
        MutexLock lock(mutex_);
        return std::exchange(calls_, {});
    }

private:
    Mutex mutex_;
    std::vector<std::string> calls_ VX3_GUARDED_BY(mutex_);
};

inline std::unique_ptr<IImage> MakeImage(std::uint64_t blockId, std::uint32_t resent = 0,
                                         std::uint32_t lost = 0) {
    ImageInfo info;
    info.width = 8;
    info.height = 8;
    info.pixelFormat = Mono8;
    info.blockId = blockId;
    info.statusC = resent;
    info.lostPackets = lost;
    return ImageCreator::Create(&info, nullptr, nullptr);
}

class FakeStream final : public StreamAbs {
public:
    FakeStream(IDevice* parent, unsigned int index, CallLog* log = nullptr)
        : StreamAbs("Fake stream", parent, index), log_(log) {}
    ~FakeStream() override { Shutdown(); }

    void Insert(std::uint64_t blockId, std::uint32_t resent = 0, std::uint32_t lost = 0) {
        InsertImage(MakeImage(blockId, resent, lost), 0);
    }
    using StreamAbs::GetStatistics;
    LiveStatistics* GetStatistics() override { return &statistics_; }

    std::atomic<StatusCode> openStatus{Status::Ok};
    std::atomic<StatusCode> startStatus{Status::Ok};
    std::atomic<unsigned int> payloadSize{0};

protected:
    bool IsStreamingP() const override { return streaming_; }
    unsigned int PayloadSizeP() const override { return payloadSize; }
    StatusCode OpenP(std::shared_ptr<IImagePool> pool, unsigned int count) override {
        Note(pool ? "open " + std::to_string(count) : "open without pool");
        return openStatus;
    }
    StatusCode StartStreamP(std::shared_ptr<IImagePool> pool, unsigned int count) override {
        Note(pool ? "start " + std::to_string(count) : "start without pool");
        streaming_ = !Failed(startStatus);
        return startStatus;
    }
    StatusCode StopStreamP() override {
        Note("stop");
        streaming_ = false;
        return Status::Ok;
    }
    StatusCode CloseP() override {
        Note("close");
        return Status::Ok;
    }

private:
    void Note(std::string call) {
        if (log_ != nullptr)
            log_->Add(std::move(call));
    }

    CallLog* log_;
    LiveStatistics statistics_;
    std::atomic<bool> streaming_{false};
};

// Registers are `memory`, from address 0; the URL of the description stands at UrlAddress.
class FakeDevice final : public GenIDevice {
public:
    static constexpr std::int64_t UrlAddress = 0x10000;

    explicit FakeDevice(const char* name, IDevice* parent = nullptr)
        : GenIDevice(TypeIds::SubDevice + 1, name, parent) {}
    ~FakeDevice() override { Shutdown(); }

    StatusCode ReadPort(unsigned long long address, unsigned char* buffer, unsigned int length) override {
        if (address == UrlAddress) {
            std::memcpy(buffer, url.data(), std::min<std::size_t>(url.size(), length));
            return Status::Ok;
        }
        if (address > memory.size() || length > memory.size() - address)
            return Status::NotFound;
        std::memcpy(buffer, memory.data() + address, length);
        return Status::Ok;
    }
    StatusCode WritePort(unsigned long long address, const unsigned char* buffer,
                         unsigned int length) override {
        if (address > memory.size() || length > memory.size() - address)
            return Status::NotFound;
        calls.Add("write " + std::to_string(address) + " " + std::to_string(buffer[0]));
        std::memcpy(memory.data() + address, buffer, length);
        return Status::Ok;
    }
    std::int64_t GetXmlUrlAddr() override { return url.empty() ? -1 : UrlAddress; }
    bool IsManifestSupported() override { return false; }
    std::string UniqueName() const override { return uniqueName.empty() ? Name() : uniqueName; }

    FakeStream* AddStream() {
        std::vector<std::shared_ptr<IStream>> streams = Streams();
        auto stream = std::make_shared<FakeStream>(this, static_cast<unsigned int>(streams.size()), &calls);
        streams.push_back(stream);
        UpdateStreams(streams);
        return stream.get();
    }
    void DropStreams() {
        std::vector<std::shared_ptr<IStream>> none;
        UpdateStreams(none);
    }
    // A description in the device's own memory, behind the first 64 bytes.
    void Describe(const std::string& xml) {
        memory.resize(64);
        memory.insert(memory.end(), xml.begin(), xml.end());
        memory.resize(memory.size() + 64);
        url = StringForLocalUrl(xml.size());
    }
    using DeviceAbs::ReportLost;
    using DeviceAbs::SetInitialState;

    std::vector<unsigned char> memory;
    std::string url;
    std::string uniqueName;
    CallLog calls;
    std::atomic<StatusCode> connectStatus{Status::Ok};
    std::atomic<StatusCode> disconnectStatus{Status::Ok};
    const char* postConnectThrows = nullptr;

protected:
    StatusCode ConnectP() override {
        calls.Add("connect");
        return connectStatus;
    }
    StatusCode DisConnectP() override {
        calls.Add("disconnect");
        return disconnectStatus;
    }
    StatusCode PostConnect() override {
        calls.Add("post connect");
        if (postConnectThrows != nullptr)
            throw postConnectThrows;
        return Status::Ok;
    }
    StatusCode AcquisitionStartPP(unsigned int) override {
        calls.Add("acquisition start");
        return Status::Ok;
    }
    StatusCode AcquisitionStopPP(unsigned int) override {
        calls.Add("acquisition stop");
        return Status::Ok;
    }

private:
    static std::string StringForLocalUrl(std::size_t size) {
        char text[64];
        std::snprintf(text, sizeof(text), "Local:fake.xml;40;%zX", size);
        return text;
    }
};

} // namespace VX3::Testing
