#include "gentl/GenTLEvents.h"

#include "gentl/GenTLInfo.h"
#include "vx3/core/Mutex.h"

#include <algorithm>
#include <thread>

namespace VX3 {

using std::chrono::milliseconds;

namespace {

constexpr milliseconds CallBound(2000);
constexpr milliseconds JoinBound(2000);
constexpr std::uint64_t WaitMs = 500;
constexpr milliseconds ErrorPause(500);
constexpr std::size_t MaxEventSize = 65536;

} // namespace

// What a waiting thread uses; it may outlive the object when the producer keeps it.
struct GenTLEvents::Waiter {
    std::shared_ptr<GenTLAPI> producer;
    std::int32_t type = 0;
    GenTLHandle::Use module; // not closed while somebody waits
    GenTL::EVENT_HANDLE event = nullptr;
    Mutex mutex;
    CondVar changed;
    std::function<void(const Event&)> listener VX3_GUARDED_BY(mutex); // empty: nobody listens any more
    bool ended VX3_GUARDED_BY(mutex) = false;
    std::unique_ptr<ThreadEx<>> thread;

    std::string Data(const std::vector<unsigned char>& bytes, std::size_t size, std::int32_t command,
                     std::int32_t& type_) const;
    Event Decode(const std::vector<unsigned char>& bytes, std::size_t size) const;
    void Wait(const std::atomic<bool>& running);
    void Pause(const std::atomic<bool>& running);
};

GenTLEvents::GenTLEvents(std::shared_ptr<GenTLAPI> producer, const GenTLHandle& module,
                         std::function<void(const Event&)> listener)
    : producer_(std::move(producer)), module_(module), listener_(std::move(listener)) {
    for (const std::int32_t type : {GenTL::EVENT_ERROR, GenTL::EVENT_FEATURE_INVALIDATE,
                                    GenTL::EVENT_FEATURE_CHANGE, GenTL::EVENT_REMOTE_DEVICE})
        Register(type);
}

void GenTLEvents::Register(std::int32_t type) {
    auto waiter = std::make_shared<Waiter>();
    waiter->producer = producer_;
    waiter->type = type;
    waiter->module = module_.Borrow();
    if (!waiter->module)
        return;
    const auto event = producer_->Ask("registering an event", CallBound, [waiter] {
        GenTL::EVENT_HANDLE handle = nullptr;
        const auto code =
            waiter->producer->Call<&GenTLAPI::pGCRegisterEvent>(waiter->module.Get(), waiter->type, &handle);
        return code == GenTL::GC_ERR_SUCCESS ? handle : nullptr;
    });
    if (!event || *event == nullptr)
        return;
    waiter->event = *event;
    {
        MutexLock lock(waiter->mutex);
        waiter->listener = listener_;
    }
    waiter->thread = std::make_unique<ThreadEx<>>(
        [waiter = waiter.get(), keep = std::weak_ptr<Waiter>(waiter)](const std::atomic<bool>& running) {
            const auto self = keep.lock(); // the thread's own share
            if (self)
                waiter->Wait(running);
        });
    waiter->thread->Start();
    waiters_.push_back(std::move(waiter));
}

GenTLEvents::~GenTLEvents() {
    for (const auto& waiter : waiters_) {
        waiter->thread->RequestStop();
        MutexLock lock(waiter->mutex);
        waiter->listener = nullptr;
        waiter->changed.NotifyAll();
    }
    for (const auto& waiter : waiters_) {
        producer_->Ask("ending a wait for events", CallBound,
                       [waiter] { return waiter->producer->Call<&GenTLAPI::pEventKill>(waiter->event); });
        bool ended = false;
        {
            const auto deadline = std::chrono::steady_clock::now() + JoinBound;
            const bool own = waiter->thread->IsCurrentThread(); // its listener ends the events
            MutexLock lock(waiter->mutex);
            while (!own && !waiter->ended && std::chrono::steady_clock::now() < deadline)
                waiter->changed.WaitUntil(waiter->mutex, deadline);
            ended = waiter->ended;
        }
        if (!ended && waiter->thread->IsCurrentThread()) {
            waiter->thread->Detach();
            continue;
        }
        if (!ended) {
            VxLoggerLog(LogLevel::Error, "SDK", "%s: EventGetData does not return; its thread is left alone",
                        producer_->Name().c_str());
            waiter->thread->Detach();
            continue;
        }
        waiter->thread->Stop();
        producer_->Ask("unregistering an event", CallBound, [waiter] {
            return waiter->producer->Call<&GenTLAPI::pGCUnregisterEvent>(waiter->module.Get(), waiter->type);
        });
        waiter->module = GenTLHandle::Use();
    }
}

bool GenTLEvents::IsSameId(const std::string& a, const std::string& b) {
    const auto bare = [](std::string text) {
        text.erase(0, std::min(text.find_first_not_of('0'), text.size()));
        std::transform(text.begin(), text.end(), text.begin(),
                       [](char c) { return c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c; });
        return text;
    };
    return !a.empty() && !b.empty() && bare(a) == bare(b);
}

// ---- on the waiting thread ----

void GenTLEvents::Waiter::Wait(const std::atomic<bool>& running) {
    std::vector<unsigned char> bytes(MaxEventSize);
    while (running) {
        std::size_t size = bytes.size();
        const auto code = producer->CallQuietly<&GenTLAPI::pEventGetData>(
            event, static_cast<void*>(bytes.data()), &size, WaitMs);
        if (code == GenTL::GC_ERR_SUCCESS && running) {
            const Event decoded = Decode(bytes, std::min(size, bytes.size()));
            std::function<void(const Event&)> call;
            {
                MutexLock lock(mutex);
                call = listener;
            }
            if (call)
                call(decoded);
        } else if (code != GenTL::GC_ERR_SUCCESS && code != GenTL::GC_ERR_TIMEOUT) {
            Pause(running); // an event that fails at once must not keep a processor busy
        }
    }
    MutexLock lock(mutex);
    ended = true;
    changed.NotifyAll();
}

void GenTLEvents::Waiter::Pause(const std::atomic<bool>& running) {
    MutexLock lock(mutex);
    if (running)
        changed.WaitFor(mutex, ErrorPause);
}

std::string GenTLEvents::Waiter::Data(const std::vector<unsigned char>& bytes, std::size_t size,
                                      std::int32_t command, std::int32_t& kind) const {
    std::vector<char> text(MaxEventSize + 1);
    std::size_t length = MaxEventSize;
    if (producer->CallQuietly<&GenTLAPI::pEventGetDataInfo>(
            event, static_cast<const void*>(bytes.data()), size, command, &kind,
            static_cast<void*>(text.data()), &length) != GenTL::GC_ERR_SUCCESS)
        return {};
    std::string data(text.data(), std::min(length, MaxEventSize));
    if (kind == GenTL::INFO_DATATYPE_STRING)
        data.resize(std::min(data.size(), data.find('\0')));
    return data;
}

GenTLEvents::Event GenTLEvents::Waiter::Decode(const std::vector<unsigned char>& bytes,
                                               std::size_t size) const {
    Event decoded;
    decoded.type = type;
    std::int32_t kind = GenTL::INFO_DATATYPE_UNKNOWN;
    decoded.id = Data(bytes, size, GenTL::EVENT_DATA_ID, kind);
    if (kind == GenTL::INFO_DATATYPE_INT32 && decoded.id.size() >= sizeof(std::int32_t)) {
        std::int32_t number = 0;
        std::memcpy(&number, decoded.id.data(), sizeof(number));
        decoded.number = number;
    }
    decoded.value = Data(bytes, size, GenTL::EVENT_DATA_VALUE, kind);
    return decoded;
}

} // namespace VX3
