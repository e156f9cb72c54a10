// A camera and a stream without transport: tests script their answers, insert images and see what was called.
#pragma once

#include "device/InterfaceDevAbs.h"
#include "device/ManagerAbs.h"
#include "device/StreamAbs.h"
#include "support/Threads.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/Mutex.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace VX3::Test {

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

class FakeStream : public StreamAbs {
public:
    FakeStream(IDevice* parent, unsigned int index, CallLog* log = nullptr)
        : StreamAbs("Fake stream", parent, index), log_(log) {}
    ~FakeStream() override { Shutdown(); }

    void Insert(std::uint64_t blockId, std::uint32_t resent = 0, std::uint32_t lost = 0) {
        ImageInfo info;
        info.width = 8;
        info.height = 8;
        info.pixelFormat = Mono8;
        info.blockId = blockId;
        info.statusC = resent;
        info.lostPackets = lost;
        InsertImage(ImageCreator::Create(&info, nullptr, nullptr), 0);
    }
    // Opens and starts; `body` is called for every image that is delivered.
    void Run(std::function<void(const ImageInfo&, IDevice*)> body) {
        const auto callback = [body](std::shared_ptr<IImage> image, IDevice* device, unsigned int,
                                     unsigned int, void*) { body(*image->GetImageInfo(), device); };
        if (Failed(Open(1, nullptr)) || Failed(Start(callback, nullptr, 0, nullptr)))
            throw std::runtime_error("the stream does not run");
    }
    using StreamAbs::GetStatistics;
    LiveStatistics* GetStatistics() override { return &statistics_; }
    IConfigurer* GetConfigurer() override { return configurer.get(); }

    std::atomic<StatusCode> openStatus{Status::Ok};
    std::atomic<StatusCode> startStatus{Status::Ok};
    std::atomic<unsigned int> payloadSize{0};
    std::unique_ptr<IConfigurer> configurer;

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
class FakeDevice : public GenIDevice {
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
        if (address > memory.size() || length > memory.size() - address || address == failingWrite)
            return Status::NotFound;
        calls.Add("write " + std::to_string(address) + " " + std::to_string(buffer[0]));
        std::memcpy(memory.data() + address, buffer, length);
        return Status::Ok;
    }
    std::int64_t GetXmlUrlAddr() override { return url.empty() ? -1 : UrlAddress; }
    bool IsManifestSupported() override { return false; }

    template <typename Stream = FakeStream>
    Stream* AddStream() {
        std::vector<std::shared_ptr<IStream>> streams = Streams();
        auto stream = std::make_shared<Stream>(this, static_cast<unsigned int>(streams.size()), &calls);
        streams.push_back(stream);
        UpdateStreams(streams);
        return stream.get();
    }
    // A description in the device's own memory, behind 256 bytes of registers.
    void Describe(const std::string& xml) {
        memory.resize(256);
        memory.insert(memory.end(), xml.begin(), xml.end());
        memory.resize(memory.size() + 64);
        url = StringForLocalUrl(xml.size());
    }
    using DeviceAbs::ReportLost;
    using DeviceAbs::SetInitialState;
    using DeviceAbs::UpdateStreams;

    std::vector<unsigned char> memory;
    unsigned long long failingWrite = ~0ULL;
    std::string url;
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
        std::snprintf(text, sizeof(text), "Local:fake.xml;100;%zX", size);
        return text;
    }
};

// An interface device whose cameras are those that a test says it can reach.
class FakeInterface : public InterfaceDevAbs {
public:
    explicit FakeInterface(const char* name = "interface")
        : InterfaceDevAbs(TypeIds::InterfaceDevice + 1, name) {}
    ~FakeInterface() override { Shutdown(); }

    std::list<std::shared_ptr<IDevice>> EnumSubDevices(unsigned int timeoutMs) override {
        ++rounds;
        lastTimeout = timeoutMs;
        MutexLock lock(mutex_);
        return reachable_;
    }
    void SetReachable(std::list<std::shared_ptr<IDevice>> devices) {
        MutexLock lock(mutex_);
        reachable_ = std::move(devices);
    }

    std::atomic<int> rounds{0};
    std::atomic<unsigned int> lastTimeout{0};

protected:
    StatusCode ConnectP() override { return Status::Ok; }
    StatusCode DisConnectP() override { return Status::Ok; }

private:
    Mutex mutex_;
    std::list<std::shared_ptr<IDevice>> reachable_ VX3_GUARDED_BY(mutex_);
};

// A manager of the given interface devices.
class FakeManager final : public ManagerAbs {
public:
    FakeManager(IntfDevType type, const char* name, std::vector<std::shared_ptr<IDevice>> devices,
                StatusCode status = Status::Ok)
        : ManagerAbs(type, name), devices_(std::move(devices)), status_(status) {
        if (!Failed(status))
            (void)UpdateDevices(devices_, IntfDevType::All);
    }
    StatusCode EnumDevices() override {
        return Failed(status_) ? status_ : UpdateDevices(devices_, IntfDevType::All);
    }
    using ManagerAbs::UpdateDevices;

private:
    std::vector<std::shared_ptr<IDevice>> devices_;
    StatusCode status_;
};

} // namespace VX3::Test
