#include "gentl/GenTLInterface.h"

#include "gentl/GenTLInfo.h"

#include <algorithm>

namespace VX3 {

using std::chrono::milliseconds;

namespace {

constexpr milliseconds OpenBound(5000);
constexpr milliseconds UseBound(1000); // until calls that run have returned
// What listing takes beyond the producer's own wait.
constexpr milliseconds ListMargin(3000);
constexpr std::uint32_t MaxDevices = 256;

} // namespace

std::shared_ptr<GenTLInterface> GenTLInterface::Open(const std::shared_ptr<GenTLAPI>& producer,
                                                     const std::string& id) {
    return producer
        ->Ask("opening an interface", OpenBound,
              [producer, id] { return producer->OpenInterface(producer, id); })
        .value_or(nullptr);
}

GenTLInterface::GenTLInterface(std::shared_ptr<GenTLAPI> producer, std::string id)
    : id_(std::move(id)), port_(std::move(producer)) {
    OpenHandle();
}

bool GenTLInterface::OpenHandle() {
    const auto& producer = *Producer();
    GenTL::IF_HANDLE handle = nullptr;
    auto code = producer.Call<&GenTLAPI::pTLOpenInterface>(producer.transportHandle, id_.c_str(), &handle);
    if (code == GenTL::GC_ERR_NOT_INITIALIZED) { // some want the list to have been updated just before
        (void)producer.Call<&GenTLAPI::pTLUpdateInterfaceList>(
            producer.transportHandle, static_cast<GenTL::bool8_t*>(nullptr), std::uint64_t{100});
        code = producer.Call<&GenTLAPI::pTLOpenInterface>(producer.transportHandle, id_.c_str(), &handle);
    }
    if (code != GenTL::GC_ERR_SUCCESS)
        producer.LogFailure(("opening interface " + CleanText(id_)).c_str(), code);
    else
        port_.Handle().Set(handle);
    return port_.Handle().IsOpen();
}

GenTLInterface::~GenTLInterface() {
    void* const handle = port_.Handle().Take(
        UseBound, [producer = Producer()](void* late) { (void)producer->Call<&GenTLAPI::pIFClose>(late); });
    if (handle == nullptr)
        return;
    (void)Producer()->Close("closing an interface", [producer = Producer(), handle] {
        return producer->Call<&GenTLAPI::pIFClose>(handle);
    });
}

// ---- cameras ----

std::optional<std::vector<GenTLInterface::DeviceEntry>>
GenTLInterface::ListDevices(const std::shared_ptr<GenTLInterface>& self, milliseconds timeout) {
    if (self->listing_.exchange(true)) // an earlier question is not answered yet
        return std::nullopt;
    // Ends with the job, whether that was begun or not.
    const std::shared_ptr<void> asking(nullptr, [self](void*) { self->listing_ = false; });
    return self->Producer()
        ->Ask(
            "listing cameras", timeout + ListMargin, [self, timeout, asking] { return self->List(timeout); },
            {}, CallThreads::Overdue::Tolerated)
        .value_or(std::nullopt);
}

// After changes of the network some producers know their own interface no more: it is opened anew, once.
bool GenTLInterface::UpdateList(milliseconds timeout) {
    const auto& producer = *Producer();
    GenTL::bool8_t changed = 0;
    const auto wait = static_cast<std::uint64_t>(timeout.count());
    auto update = [&] {
        const auto use = port_.Handle().Borrow();
        return use ? producer.Call<&GenTLAPI::pIFUpdateDeviceList>(use.Get(), &changed, wait)
                   : GenTL::GC_ERROR{GenTL::GC_ERR_INVALID_HANDLE};
    };
    auto code = update();
    if (code == GenTL::GC_ERR_INVALID_HANDLE) {
        (void)port_.Handle().Take(milliseconds(0));
        (void)producer.Call<&GenTLAPI::pTLUpdateInterfaceList>(producer.transportHandle, &changed,
                                                               std::uint64_t{100});
        if (OpenHandle())
            code = update();
    }
    return code == GenTL::GC_ERR_SUCCESS || code == GenTL::GC_ERR_TIMEOUT; // then the old list stands
}

std::optional<std::vector<GenTLInterface::DeviceEntry>> GenTLInterface::List(milliseconds timeout) {
    MutexLock lock(listMutex_);
    const auto& producer = *Producer();
    const bool updated = UpdateList(timeout);
    const auto use = port_.Handle().Borrow();
    std::uint32_t count = 0;
    const GenTL::GC_ERROR code = use ? producer.Call<&GenTLAPI::pIFGetNumDevices>(use.Get(), &count)
                                     : GenTL::GC_ERROR{GenTL::GC_ERR_INVALID_HANDLE};
    const bool heard = updated && code == GenTL::GC_ERR_SUCCESS;
    if (!heard && !complained_)
        VxLoggerLog(LogLevel::Error, "SDK", "%s: the cameras of interface %s cannot be listed: %s",
                    producer.Name().c_str(), CleanText(id_).c_str(), StatusText(code).c_str());
    complained_ = !heard;
    if (code != GenTL::GC_ERR_SUCCESS)
        return std::nullopt;
    if (count > MaxDevices)
        VxLoggerLog(LogLevel::Warning, "SDK", "%s: interface %s claims %u cameras; %u are asked for",
                    producer.Name().c_str(), CleanText(id_).c_str(), count, MaxDevices);
    std::vector<DeviceEntry> entries;
    for (std::uint32_t index = 0; index < std::min(count, MaxDevices); ++index) {
        DeviceEntry entry;
        const auto idCode = ReadText(entry.id, [&](std::int32_t*, void* buffer, std::size_t* size) {
            return producer.Call<&GenTLAPI::pIFGetDeviceID>(use.Get(), index, static_cast<char*>(buffer),
                                                            size);
        });
        if (idCode != GenTL::GC_ERR_SUCCESS)
            continue;
        const auto nameCode =
            ReadText(entry.displayName, [&](std::int32_t* type, void* buffer, std::size_t* size) {
                return producer.Call<&GenTLAPI::pIFGetDeviceInfo>(
                    use.Get(), entry.id.c_str(), std::int32_t{GenTL::DEVICE_INFO_DISPLAYNAME}, type, buffer,
                    size);
            });
        if (nameCode == GenTL::GC_ERR_SUCCESS)
            entries.push_back(std::move(entry));
    }
    return entries;
}

std::string GenTLInterface::DeviceText(const std::string& device, std::int32_t command) {
    std::string text;
    const auto use = port_.Handle().Borrow();
    if (use)
        (void)ReadText(text, [&](std::int32_t* type, void* buffer, std::size_t* size) {
            return Producer()->Call<&GenTLAPI::pIFGetDeviceInfo>(use.Get(), device.c_str(), command, type,
                                                                 buffer, size);
        });
    return CleanText(std::move(text));
}

} // namespace VX3
