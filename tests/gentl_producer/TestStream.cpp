// Buffers and frames of the test producer.
#include "TestProducer.h"

#include <algorithm>
#include <cstring>

namespace TestProducer {

using Lock = std::unique_lock<std::mutex>;

Stream::~Stream() {
    Stop();
}

Buffer* Stream::Find(BUFFER_HANDLE handle) {
    for (const auto& buffer : buffers)
        if (buffer.get() == handle)
            return buffer.get();
    return nullptr;
}

std::uint64_t Stream::PayloadSize() const {
    return static_cast<std::uint64_t>(TheSettings().Number(
        "payload", static_cast<long long>(camera.Register(Width)) * camera.Register(Height)));
}

GC_ERROR Stream::Announce(void* memory, std::size_t size, void* userPointer, BUFFER_HANDLE* handle) {
    const Lock lock(mutex);
    auto buffer = std::make_unique<Buffer>();
    buffer->size = size;
    buffer->userPointer = userPointer;
    if (memory == nullptr) {
        buffer->own.resize(size);
        memory = buffer->own.data();
    }
    buffer->memory = static_cast<unsigned char*>(memory);
    if (TheSettings().pace == 0 || announced.size() < 1000)
        announced.insert(memory);
    *handle = buffer.get();
    buffers.push_back(std::move(buffer));
    return GC_ERR_SUCCESS;
}

GC_ERROR Stream::Revoke(BUFFER_HANDLE handle, void** memory, void** userPointer) {
    const Lock lock(mutex);
    Buffer* const buffer = Find(handle);
    if (buffer == nullptr)
        return GC_ERR_INVALID_HANDLE;
    if (buffer->where != Buffer::Where::Consumer ||
        (running && TheSettings().pace == 0 && TheSettings().Number("revoke.busy") != 0))
        return GC_ERR_BUSY;
    if (memory != nullptr)
        *memory = buffer->own.empty() ? buffer->memory : nullptr;
    if (userPointer != nullptr)
        *userPointer = buffer->userPointer;
    buffers.remove_if([&](const auto& candidate) { return candidate.get() == buffer; });
    return GC_ERR_SUCCESS;
}

GC_ERROR Stream::Queue(BUFFER_HANDLE handle) {
    const Lock lock(mutex);
    Buffer* const buffer = Find(handle);
    if (buffer == nullptr)
        return GC_ERR_INVALID_HANDLE;
    if (buffer->where != Buffer::Where::Consumer)
        return GC_ERR_RESOURCE_IN_USE;
    buffer->where = Buffer::Where::Input;
    input.push_back(buffer);
    if (TheSettings().pace == 0 && running && camera.acquiring && TheSettings().Number("frames.ms", 5) < 0) {
        input.pop_back();
        ++frames;
        buffer->frame = frames;
        buffer->newData = true;
        buffer->incomplete = false;
        buffer->filled = buffer->size;
        buffer->where = Buffer::Where::Output;
        output.push_back(buffer);
    }
    changed.notify_all();
    return GC_ERR_SUCCESS;
}

GC_ERROR Stream::Flush(std::int32_t operation) {
    const Lock lock(mutex);
    const auto drop = [&](std::deque<Buffer*>& from) {
        for (Buffer* buffer : from)
            buffer->where = Buffer::Where::Consumer;
        from.clear();
    };
    switch (operation) {
    case ACQ_QUEUE_INPUT_TO_OUTPUT:
        for (Buffer* buffer : input) {
            buffer->newData = false;
            buffer->where = Buffer::Where::Output;
            output.push_back(buffer);
        }
        input.clear();
        break;
    case ACQ_QUEUE_OUTPUT_DISCARD:
        drop(output);
        break;
    case ACQ_QUEUE_ALL_DISCARD:
        drop(input);
        drop(output);
        break;
    default:
        return GC_ERR_NOT_IMPLEMENTED;
    }
    changed.notify_all();
    return GC_ERR_SUCCESS;
}

GC_ERROR Stream::Start() {
    const Lock lock(mutex);
    if (running)
        return GC_ERR_RESOURCE_IN_USE;
    if (buffers.empty())
        return GC_ERR_INVALID_BUFFER;
    if (buffers.front()->size < PayloadSize())
        return GC_ERR_BUFFER_TOO_SMALL;
    running = true;
    engine = std::thread([this] { Run(); });
    return GC_ERR_SUCCESS;
}

GC_ERROR Stream::Stop() {
    {
        const Lock lock(mutex);
        if (!running)
            return GC_ERR_RESOURCE_IN_USE;
        running = false;
        changed.notify_all();
        beat.notify_all();
    }
    engine.join();
    return GC_ERR_SUCCESS;
}

// Every pixel of frame n is its place plus n, so that a test sees whose bytes it has.
void Stream::Fill(Buffer& buffer) {
    ++frames;
    const auto every = [&](const char* key) {
        const long long n = TheSettings().Number(key);
        return n > 0 && frames % static_cast<std::uint64_t>(n) == 0;
    };
    buffer.frame = frames;
    buffer.newData = true;
    buffer.incomplete = every("incomplete");
    buffer.filled =
        std::min<std::size_t>(buffer.size, std::size_t{camera.Register(Width)} * camera.Register(Height));
    for (std::size_t i = 0; i < buffer.filled; ++i)
        buffer.memory[i] = static_cast<unsigned char>(i + frames);
    buffer.where = Buffer::Where::Output;
    output.push_back(&buffer);
    if (every("twice"))
        repeated.push_back({&buffer, buffer.userPointer});
}

// On the beat, without touching the pixels: what the consumer costs is measured, not this.
void Stream::RunPaced(Lock& lock) {
    auto next = std::chrono::steady_clock::now();
    while (running) {
        next += std::chrono::microseconds(TheSettings().pace);
        while (running && std::chrono::steady_clock::now() < next)
            beat.wait_until(lock, next);
        if (!camera.acquiring)
            continue;
        if (input.empty()) {
            ++underruns;
            continue;
        }
        Buffer* const buffer = input.front();
        input.pop_front();
        buffer->frame = ++frames;
        buffer->newData = true;
        buffer->filled = buffer->size;
        buffer->where = Buffer::Where::Output;
        output.push_back(buffer);
        changed.notify_all();
    }
}

void Stream::Run() {
    Lock lock(mutex);
    if (TheSettings().pace != 0) {
        RunPaced(lock);
        return;
    }
    while (running) {
        const long long pause = TheSettings().Number("frames.ms", 5);
        if (pause < 0) { // what waits comes at once, the rest when it is queued
            while (running && camera.acquiring && !input.empty()) {
                Buffer* const buffer = input.front();
                input.pop_front();
                Fill(*buffer);
                changed.notify_all();
            }
        } else if (camera.acquiring && camera.plugged) {
            if (input.empty()) {
                ++underruns;
            } else {
                Buffer* const buffer = input.front();
                input.pop_front();
                Fill(*buffer);
                changed.notify_all();
            }
        }
        changed.wait_for(lock, std::chrono::milliseconds(std::max(1LL, pause < 0 ? 20 : pause)),
                         [&] { return !running; });
    }
    if (TheSettings().Number("late") != 0 && !input.empty()) {
        Buffer* const buffer = input.front();
        input.pop_front();
        Fill(*buffer);
        changed.notify_all();
    }
}

GC_ERROR Stream::Wait(EVENT_NEW_BUFFER_DATA& data, std::uint64_t timeoutMs) {
    Lock lock(mutex);
    const auto ready = [&] { return !output.empty() || !repeated.empty() || kills > 0 || !registered; };
    if (!changed.wait_for(lock, std::chrono::milliseconds(std::min<std::uint64_t>(timeoutMs, 3600000)),
                          ready))
        return GC_ERR_TIMEOUT;
    if (kills > 0 || !registered) {
        kills = std::max(0, kills - 1);
        return GC_ERR_ABORT;
    }
    if (output.empty()) {
        data = repeated.front();
        repeated.pop_front();
        return GC_ERR_SUCCESS;
    }
    Buffer* const buffer = output.front();
    output.pop_front();
    buffer->where = Buffer::Where::Consumer;
    data.BufferHandle = buffer;
    data.pUserPointer = buffer->userPointer;
    return GC_ERR_SUCCESS;
}

GC_ERROR Stream::Info(BUFFER_HANDLE handle, std::int32_t command, std::int32_t* type, void* buffer,
                      std::size_t* size) {
    const Lock lock(mutex);
    const Buffer* const of = Find(handle);
    if (of == nullptr)
        return GC_ERR_INVALID_HANDLE;
    const bool paced = TheSettings().pace != 0;
    if (const long long code = paced ? 0 : TheSettings().Number("info." + std::to_string(command)))
        return static_cast<GC_ERROR>(code);
    const auto forced = [&](std::uint64_t value) {
        if (paced)
            return value;
        return static_cast<std::uint64_t>(
            TheSettings().Number("value." + std::to_string(command), static_cast<long long>(value)));
    };
    const auto number = [&](std::uint64_t value, std::int32_t kind) {
        return GiveNumber(forced(value), kind, type, buffer, size);
    };
    switch (command) {
    case BUFFER_INFO_BASE:
        return number(reinterpret_cast<std::uintptr_t>(of->memory), INFO_DATATYPE_PTR);
    case BUFFER_INFO_SIZE:
        return number(of->size, INFO_DATATYPE_SIZET);
    case BUFFER_INFO_TIMESTAMP:
        return number((std::uint64_t{1} << 32) + of->frame * 1000, INFO_DATATYPE_UINT64);
    case BUFFER_INFO_NEW_DATA:
        return number(of->newData ? 1 : 0, INFO_DATATYPE_BOOL8);
    case BUFFER_INFO_IS_INCOMPLETE:
        return number(of->incomplete ? 1 : 0, INFO_DATATYPE_BOOL8);
    case BUFFER_INFO_SIZE_FILLED:
        return number(of->filled, INFO_DATATYPE_SIZET);
    case BUFFER_INFO_WIDTH:
        return number(camera.Register(Width), INFO_DATATYPE_SIZET);
    case BUFFER_INFO_HEIGHT:
    case BUFFER_INFO_DELIVERED_IMAGEHEIGHT:
        return number(camera.Register(Height), INFO_DATATYPE_SIZET);
    case BUFFER_INFO_XOFFSET:
    case BUFFER_INFO_YOFFSET:
    case BUFFER_INFO_XPADDING:
    case BUFFER_INFO_YPADDING:
    case BUFFER_INFO_IMAGEOFFSET:
        return number(0, INFO_DATATYPE_SIZET);
    case BUFFER_INFO_FRAMEID:
        return number((std::uint64_t{1} << 40) + of->frame, INFO_DATATYPE_UINT64);
    case BUFFER_INFO_PAYLOADTYPE:
        return number(PAYLOAD_TYPE_IMAGE, INFO_DATATYPE_SIZET);
    case BUFFER_INFO_PIXELFORMAT:
        return number(camera.Register(PixelFormat), INFO_DATATYPE_UINT64);
    case BUFFER_INFO_PIXELFORMAT_NAMESPACE:
        return number(PIXELFORMAT_NAMESPACE_PFNC_32BIT, INFO_DATATYPE_UINT64);
    default:
        return GC_ERR_NOT_IMPLEMENTED;
    }
}

} // namespace TestProducer
