#include "gentl/GenTLStream.h"

#include "genicam/GenApiRI.h"
#include "genicam/GenICamConfigurer.h"
#include "gentl/GenTLDescription.h"
#include "gentl/GenTLDevice.h"
#include "gentl/GenTLInfo.h"
#include "vx3/core/LastFailure.h"

#include <algorithm>
#include <utility>

namespace VX3 {

using std::chrono::milliseconds;

namespace {

constexpr milliseconds CallBound(5000);
constexpr milliseconds BuffersBound(20000); // announcing pins memory, and there may be much of it
constexpr milliseconds JoinBound(2000);
constexpr milliseconds UseBound(1000); // until calls that run have returned
constexpr std::uint64_t FramesForEver = 0xFFFFFFFFFFFFULL;
// A producer that wants more buffers than that is not believed.
constexpr std::uint64_t MaxMinimum = 256;

GenTL::GC_ERROR StreamNumber(const GenTLAPI& producer, void* stream, std::int32_t command,
                             std::uint64_t& value) {
    return ReadNumber(value, [&](std::int32_t* type, void* buffer, std::size_t* size) {
        return producer.Call<&GenTLAPI::pDSGetInfo>(stream, command, type, buffer, size);
    });
}

} // namespace

GenTLStream::GenTLStream(std::shared_ptr<GenTLAPI> producer, const char* streamId, GenTLDevice* device,
                         unsigned int index)
    : StreamAbs(streamId, device, index),
      producer_(std::move(producer)),
      id_(streamId),
      device_(device->DeviceHandle()),
      port_(producer_) {
    statistics_.reserved = 1;
    OpenModule();
}

GenTLStream::~GenTLStream() {
    Shutdown();
    CloseModule();
}

// ---- the module ----

bool GenTLStream::OpenModule() {
    if (port_.Handle().IsOpen() || closed_)
        return port_.Handle().IsOpen();
    const auto handle = producer_->Ask(
        "opening a data stream", CallBound,
        [producer = producer_, use = device_.Borrow(), id = id_] {
            GenTL::DS_HANDLE stream = nullptr;
            if (!use)
                return stream;
            const auto code = producer->Call<&GenTLAPI::pDevOpenDataStream>(use.Get(), id.c_str(), &stream);
            if (code == GenTL::GC_ERR_SUCCESS)
                return stream;
            producer->LogFailure("DevOpenDataStream", code);
            return GenTL::DS_HANDLE{nullptr};
        },
        [producer = producer_](GenTL::DS_HANDLE& late) {
            if (late != nullptr)
                (void)producer->Call<&GenTLAPI::pDSClose>(late);
        });
    if (handle && *handle != nullptr)
        port_.Handle().Set(*handle);
    return port_.Handle().IsOpen();
}

void GenTLStream::CloseModule() {
    closed_ = true;
    bool closed = left_.empty();
    const auto closeLate = [producer = producer_](void* handle) {
        (void)producer->Call<&GenTLAPI::pDSClose>(handle);
    };
    if (void* const handle = port_.Handle().Take(producer_->IsHung() ? milliseconds(0) : UseBound, closeLate))
        closed = producer_->Close("closing a data stream", [producer = producer_, handle] {
            return producer->Call<&GenTLAPI::pDSClose>(handle);
        });
    if (!closed)
        for (auto& blocks : left_)
            producer_->Keep(std::move(blocks));
    left_.clear();
}

StatusCode GenTLStream::ReadPort(unsigned long long address, unsigned char* buffer, unsigned int length) {
    return port_.Read(address, buffer, length);
}

StatusCode GenTLStream::WritePort(unsigned long long address, const unsigned char* buffer,
                                  unsigned int length) {
    return port_.Write(address, buffer, length);
}

StatusCode GenTLStream::CreateConfigurer() {
    const auto urls = port_.Urls();
    if (urls.empty())
        return Status::Ok;
    auto features = GenTLDescription::Build(urls, port_, shared_from_this(), "StreamPort");
    if (!features.genApi) {
        VxLoggerLog(LogLevel::Warning, "SDK", "%s has no features of its own: %s", Name().c_str(),
                    features.failure.c_str());
        return Status::NotAvailable;
    }
    configurer_ = std::make_unique<GenICamConfigurer>(std::move(features.genApi), this);
    return Status::Ok;
}

// ---- open ----

unsigned int GenTLStream::GetPayloaSize() {
    const auto size = producer_->Ask(
        "asking for the payload size", CallBound, [producer = producer_, use = port_.Handle().Borrow()] {
            std::uint64_t defines = 0;
            std::uint64_t bytes = 0;
            if (use)
                (void)StreamNumber(*producer, use.Get(), GenTL::STREAM_INFO_DEFINES_PAYLOADSIZE, defines);
            if (defines != 0)
                (void)StreamNumber(*producer, use.Get(), GenTL::STREAM_INFO_PAYLOAD_SIZE, bytes);
            return static_cast<unsigned int>(bytes);
        });
    if (size && *size != 0)
        return *size;
    IDevice* device = Parent();
    const auto configurer = device != nullptr ? device->ShareConfigurer() : nullptr;
    const GenICam::NodeValue value =
        configurer ? configurer->GetNodeValue("PayloadSize") : GenICam::NodeValue();
    return value.GetType() == GenICam::NodeValue::Type::Integer ? static_cast<unsigned int>(value.AsInteger())
                                                                : 0;
}

unsigned int GenTLStream::BufferCount(unsigned int wanted) {
    const auto answer = producer_->Ask(
        "asking for the number of buffers", CallBound, [producer = producer_, use = port_.Handle().Borrow()] {
            std::uint64_t minimum = 0;
            if (use)
                (void)StreamNumber(*producer, use.Get(), GenTL::STREAM_INFO_BUF_ANNOUNCE_MIN, minimum);
            return minimum;
        });
    std::uint64_t minimum = answer.value_or(0);
    if (minimum > MaxMinimum) {
        VxLoggerLog(LogLevel::Warning, "SDK", "%s wants at least %llu buffers, which is not believed",
                    Name().c_str(), static_cast<unsigned long long>(minimum));
        minimum = 0;
    }
    const unsigned int spare = minimum == 0 ? 3 : 2;
    return std::max(wanted, static_cast<unsigned int>(minimum) + spare);
}

StatusCode GenTLStream::OpenP(std::shared_ptr<IImagePool> pool, unsigned int bufferCount) {
    {
        MutexLock lock(mutex_);
        if (receiving_)
            return SetLastFailure(Status::TimeOut, Name() +
                                                       ": the producer has not returned from the stream's "
                                                       "last run yet");
    }
    if (!OpenModule())
        return SetLastFailure(Status::NotAvailable, Name() + ": the producer does not open this stream");
    payloadSize_ = GetPayloaSize();
    if (payloadSize_ == 0) {
        if (void* const handle = port_.Handle().Take(CallBound)) // opened anew by the next attempt
            (void)producer_->Close("closing a data stream", [producer = producer_, handle] {
                return producer->Call<&GenTLAPI::pDSClose>(handle);
            });
        return SetLastFailure(Status::NotFound, Name() +
                                                    ": neither the producer nor the camera tells the size "
                                                    "of a frame");
    }
    statistics_.Reset();
    statistics_.reserved = 1;
    wantedBuffers_ = bufferCount;
    return OpenBuffers(BufferCount(bufferCount), pool);
}

StatusCode GenTLStream::OpenBuffers(unsigned int count, const std::shared_ptr<IImagePool>& pool) {
    struct Opened {
        GenTL::GC_ERROR code = GenTL::GC_ERR_OUT_OF_MEMORY;
        GenTL::EVENT_HANDLE event = nullptr;
        std::shared_ptr<GenTLBlocks> blocks;
    };
    VxLoggerLog(LogLevel::Info, "SDK", "Ready to allocate %d buffers for streaming...",
                static_cast<int>(count));
    auto blocks = std::make_shared<GenTLBlocks>(producer_, port_.Handle().Borrow(), pool, payloadSize_);
    const auto use = port_.Handle().Borrow();
    auto opened = producer_->Ask(
        "announcing buffers", BuffersBound,
        [producer = producer_, use, blocks, count] {
            Opened result;
            result.blocks = blocks;
            if (blocks->Allocate(count) == 0)
                return result;
            result.code = producer->Call<&GenTLAPI::pGCRegisterEvent>(
                use.Get(), std::int32_t{GenTL::EVENT_NEW_BUFFER}, &result.event);
            if (result.code != GenTL::GC_ERR_SUCCESS) {
                producer->LogFailure("GCRegisterEvent", result.code);
                blocks->Release();
            }
            return result;
        },
        [](Opened& late) { late.blocks->Release(); });
    if (!opened)
        return SetLastFailure(Status::TimeOut, producer_->Name() + " does not return");
    if (opened->code != GenTL::GC_ERR_SUCCESS)
        return SetLastFailure(opened->event == nullptr && opened->code == GenTL::GC_ERR_OUT_OF_MEMORY
                                  ? Status::NoBuffer
                                  : opened->code,
                              Name() + ": no frames can be received: " + StatusText(opened->code));
    blocks_ = std::move(opened->blocks);
    event_ = opened->event;
    zeroCopy_ = blocks_->HasOwnMemory();
    oddBuffer_ = false;
    {
        MutexLock lock(mutex_);
        receiving_ = true;
    }
    receiver_ = std::make_unique<ThreadEx<std::shared_ptr<IImagePool>>>(
        [weak = weak_from_this()](const std::atomic<bool>& run, const std::shared_ptr<IImagePool>& images) {
            if (const auto self = weak.lock()) // the thread's own share
                self->ReceivingThread(run, images);
        });
    receiver_->Start(pool);
    return Status::Ok;
}

// ---- start and stop ----

// What the camera's features say about its frames, for a producer that says nothing.
void GenTLStream::ReadGeometry() {
    IDevice* device = Parent();
    const auto configurer = device != nullptr ? device->ShareConfigurer() : nullptr;
    const auto map = configurer ? configurer->GetNodeMap() : nullptr;
    const auto number = [&](const char* name) -> std::uint64_t {
        if (!map || map->GetNode(name) == nullptr)
            return 0;
        const auto value = configurer->GetNodeValue(name);
        if (value.GetType() == GenICam::NodeValue::Type::String)
            return PixelFormat::FromString(value.AsString());
        return static_cast<std::uint64_t>(value.AsInteger());
    };
    const GenTLGeometry geometry{number("Width"), number("Height"), number("PixelFormat")};
    MutexLock lock(mutex_);
    geometry_ = geometry;
}

GenTLGeometry GenTLStream::Geometry() {
    MutexLock lock(mutex_);
    return geometry_;
}

// The camera may have been set up for larger frames since the buffers were announced.
StatusCode GenTLStream::StartStreamP(std::shared_ptr<IImagePool>, unsigned int) {
    {
        MutexLock lock(mutex_);
        if (abandoned_ || !blocks_)
            return SetLastFailure(Status::NotAvailable, Name() + " has no buffers");
    }
    const unsigned int payload = GetPayloaSize();
    if (payload > payloadSize_) {
        const auto pool = blocks_->Pool();
        CloseP();
        payloadSize_ = payload;
        const StatusCode status = OpenBuffers(BufferCount(wantedBuffers_), pool);
        if (Failed(status))
            return status;
    }
    ReadGeometry();
    statistics_.Reset();
    statistics_.reserved = 1;
    newRun_ = true;
    streaming_ = true; // frames may come before the call returns
    const auto code = producer_->Ask(
        "starting acquisition", CallBound, [producer = producer_, use = port_.Handle().Borrow()] {
            if (!use)
                return std::pair<GenTL::GC_ERROR, std::string>(GenTL::GC_ERR_INVALID_HANDLE, "it is closed");
            const GenTL::GC_ERROR result = producer->Call<&GenTLAPI::pDSStartAcquisition>(
                use.Get(), std::int32_t{GenTL::ACQ_START_FLAGS_DEFAULT}, FramesForEver);
            return std::pair(result, producer->Explain(result));
        });
    if (code && code->first == GenTL::GC_ERR_SUCCESS)
        return Status::Ok;
    streaming_ = false;
    return code ? SetLastFailure(code->first < 0 ? code->first : Status::Generic,
                                 Name() + ": DSStartAcquisition: " + code->second)
                : SetLastFailure(Status::TimeOut, producer_->Name() + " does not return");
}

StatusCode GenTLStream::StopStreamP() {
    if (!streaming_)
        return Status::Ok;
    VxLoggerLog(LogLevel::Info, "SDK", "Ready to gentlApi->pDSStopAcquisition...");
    const auto code = producer_->Ask(
        "stopping acquisition", CallBound, [producer = producer_, use = port_.Handle().Borrow()] {
            return use ? producer->Call<&GenTLAPI::pDSStopAcquisition>(
                             use.Get(), std::int32_t{GenTL::ACQ_STOP_FLAGS_DEFAULT})
                       : GenTL::GC_ERROR{GenTL::GC_ERR_INVALID_HANDLE};
        });
    streaming_ = false;
    if (code && *code != GenTL::GC_ERR_SUCCESS)
        VxLoggerLog(LogLevel::Error, "SDK", "%s: DSStopAcquisition: %s", Name().c_str(),
                    StatusText(*code).c_str());
    else if (code)
        VxLoggerLog(LogLevel::Info, "SDK", "gentlApi->pDSStopAcquisition OK");
    return Status::Ok;
}

// ---- close ----

// False: the producer keeps the thread, which is left alone with all that it uses.
bool GenTLStream::JoinReceiver() {
    if (!receiver_) {
        MutexLock lock(mutex_);
        return !abandoned_;
    }
    receiver_->RequestStop();
    producer_->Ask("ending the wait for frames", CallBound, [producer = producer_, event = event_] {
        return producer->Call<&GenTLAPI::pEventKill>(event);
    });
    bool ended = false;
    {
        const auto deadline = std::chrono::steady_clock::now() + JoinBound;
        MutexLock lock(mutex_);
        receiverEnded_.NotifyAll();
        while (receiving_ && std::chrono::steady_clock::now() < deadline)
            receiverEnded_.WaitUntil(mutex_, deadline);
        ended = !receiving_;
        abandoned_ = !ended;
    }
    if (ended) {
        receiver_->Stop();
    } else {
        VxLoggerLog(LogLevel::Error, "SDK",
                    "%s: the producer does not return to the receiving thread, which is "
                    "left alone",
                    Name().c_str());
        receiver_->Detach();
    }
    receiver_.reset();
    return ended;
}

StatusCode GenTLStream::CloseP() {
    if (!JoinReceiver()) // the thread clears up when it comes back
        return Status::Ok;
    const std::shared_ptr<GenTLBlocks> blocks = std::exchange(blocks_, nullptr);
    if (!blocks)
        return Status::Ok;
    producer_->Ask("revoking buffers", BuffersBound,
                   [producer = producer_, use = port_.Handle().Borrow(), blocks] {
                       Revoke(*producer, use, *blocks);
                       return true;
                   });
    if (!blocks->IsEmpty())
        left_.push_back(blocks);
    return Status::Ok;
}

void GenTLStream::Revoke(const GenTLAPI& producer, const GenTLHandle::Use& stream, GenTLBlocks& blocks) {
    if (!stream)
        return;
    (void)producer.Call<&GenTLAPI::pGCUnregisterEvent>(stream.Get(), std::int32_t{GenTL::EVENT_NEW_BUFFER});
    blocks.Release();
}

} // namespace VX3
