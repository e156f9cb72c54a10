#include "gentl/GenTLDevice.h"

#include "core/DefaultConfig.h"
#include "genicam/GenApiRI.h"
#include "genicam/GenICamConfigurer.h"
#include "gentl/GenTLDescription.h"
#include "gentl/GenTLInfo.h"
#include "gentl/GenTLInterfaceDev.h"
#include "gentl/GenTLStream.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/LastFailure.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <thread>

namespace VX3 {

using std::chrono::milliseconds;

namespace {

constexpr unsigned int GenTLDeviceType = TypeIds::SubDevice + static_cast<unsigned int>(IntfDevType::GenTL);
constexpr milliseconds OpenBound(20000);
constexpr milliseconds UseBound(1000); // until calls that run have returned
constexpr milliseconds InfoBound(5000);
constexpr std::uint32_t MaxStreams = 64;

std::weak_ptr<GenTLInterface> InterfaceOf(IDevice* parent) {
    const auto* interface = dynamic_cast<const GenTLInterfaceDev*>(parent);
    return interface != nullptr ? interface->Interface() : nullptr;
}

// The access to ask for, best first. Read-only is never taken for control: it would fail later, at some
// write.
std::vector<std::int32_t> AccessFlags(DeviceAccess access) {
    if (access == DeviceAccess::Monitor)
        return {GenTL::DEVICE_ACCESS_READONLY};
    return {GenTL::DEVICE_ACCESS_EXCLUSIVE, GenTL::DEVICE_ACCESS_CONTROL};
}

void CloseDevice(const std::shared_ptr<GenTLAPI>& producer, void* handle) {
    (void)producer->Close("closing a camera",
                          [producer, handle] { return producer->Call<&GenTLAPI::pDevClose>(handle); });
}

} // namespace

// What opening a camera gives, or why it does not.
struct GenTLDevice::Opened {
    GenTL::GC_ERROR code = GenTL::GC_ERR_SUCCESS;
    std::string why;
    GenTL::DEV_HANDLE device = nullptr;
    GenTL::PORT_HANDLE port = nullptr;
    std::vector<std::pair<std::string, unsigned int>> streams; // id and index
};

GenTLDevice::GenTLDevice(std::shared_ptr<GenTLAPI> producer, const char* id, const char* displayName,
                         IDevice* parent)
    : GenIDevice(GenTLDeviceType, displayName, parent),
      producer_(std::move(producer)),
      interface_(InterfaceOf(parent)),
      id_(id),
      port_(producer_) {
    SetInitialState(DEVICE_STATE::GenTL);
    const auto interface = interface_.lock();
    if (!interface)
        return;
    const auto texts = producer_->Ask("asking who a camera is", InfoBound, [interface, id = id_] {
        return std::array<std::string, 4>{interface->DeviceText(id, GenTL::DEVICE_INFO_VENDOR),
                                          interface->DeviceText(id, GenTL::DEVICE_INFO_MODEL),
                                          interface->DeviceText(id, GenTL::DEVICE_INFO_VERSION),
                                          interface->DeviceText(id, GenTL::DEVICE_INFO_SERIAL_NUMBER)};
    });
    if (texts)
        std::tie(vendor_, model_, version_, serial_) =
            std::tie((*texts)[0], (*texts)[1], (*texts)[2], (*texts)[3]);
}

GenTLDevice::~GenTLDevice() {
    Shutdown();
}

std::list<std::pair<std::string, std::string>> GenTLDevice::GetInfo() const {
    return {{"Name", Name()},
            {"VendorName", vendor_},
            {"ModelName", model_},
            {"Version", version_},
            {"SerialNumber", serial_},
            {"DeviceID", CleanText(id_)},
            {"Producer", producer_->path}};
}

// ---- connection ----

GenTLDevice::Opened GenTLDevice::OpenModule(GenTLInterface& interface, const std::string& id,
                                            DeviceAccess access) {
    const auto& producer = *interface.Producer();
    Opened opened;
    const auto use = interface.Port().Handle().Borrow();
    if (!use) {
        opened.code = GenTL::GC_ERR_INVALID_HANDLE;
        opened.why = "its interface is not open";
        return opened;
    }
    for (const std::int32_t flag : AccessFlags(access)) {
        const auto code =
            producer.Call<&GenTLAPI::pIFOpenDevice>(use.Get(), id.c_str(), flag, &opened.device);
        if (code == GenTL::GC_ERR_SUCCESS) {
            opened.code = code;
            break;
        }
        opened.device = nullptr;
        if (opened.code == GenTL::GC_ERR_SUCCESS) { // the first refusal is the one that tells
            opened.code = code;
            opened.why = "IFOpenDevice: " + producer.Explain(code);
        }
    }
    if (opened.code != GenTL::GC_ERR_SUCCESS)
        return opened;
    opened.code = producer.Call<&GenTLAPI::pDevGetPort>(opened.device, &opened.port);
    if (opened.code != GenTL::GC_ERR_SUCCESS) {
        opened.why = "DevGetPort: " + producer.Explain(opened.code);
        (void)producer.Call<&GenTLAPI::pDevClose>(opened.device);
        return opened;
    }
    std::uint32_t count = 0;
    if (producer.Call<&GenTLAPI::pDevGetNumDataStreams>(opened.device, &count) != GenTL::GC_ERR_SUCCESS)
        count = 0;
    for (std::uint32_t index = 0; index < std::min(count, MaxStreams); ++index) {
        std::string streamId;
        const auto code = ReadText(streamId, [&](std::int32_t*, void* buffer, std::size_t* size) {
            return producer.Call<&GenTLAPI::pDevGetDataStreamID>(opened.device, index,
                                                                 static_cast<char*>(buffer), size);
        });
        if (code == GenTL::GC_ERR_SUCCESS)
            opened.streams.emplace_back(std::move(streamId), index);
    }
    return opened;
}

StatusCode GenTLDevice::ConnectP() {
    const auto interface = interface_.lock();
    if (!interface || Parent() == nullptr)
        return SetLastFailure(Status::NotAvailable, Name() + " belongs to no interface of a producer");
    const auto opened = producer_->Ask(
        "opening a camera", OpenBound,
        [interface, id = id_, access = Access()] { return OpenModule(*interface, id, access); },
        [producer = producer_](Opened& late) { // nobody waits for it any more
            if (late.code == GenTL::GC_ERR_SUCCESS)
                (void)producer->Call<&GenTLAPI::pDevClose>(late.device);
        });
    if (!opened)
        return SetLastFailure(Status::TimeOut, producer_->Name() + " does not return");
    if (opened->code != GenTL::GC_ERR_SUCCESS)
        return SetLastFailure(opened->code < 0 ? opened->code : Status::Generic, Name() + ": " + opened->why);
    device_.Set(opened->device);
    port_.Handle().Set(opened->port);
    std::vector<std::shared_ptr<IStream>> streams;
    for (const auto& [streamId, index] : opened->streams) {
        auto stream = CreateStream(producer_, streamId.c_str(), index);
        if (auto* module = dynamic_cast<GenTLStream*>(stream.get()))
            (void)module->CreateConfigurer(); // a stream without features is usable
        streams.push_back(std::move(stream));
    }
    UpdateStreams(streams);
    return Status::Ok;
}

StatusCode GenTLDevice::PostConnect() {
    const std::weak_ptr<GenIDevice> weak = weak_from_this();
    events_ = std::make_unique<GenTLEvents>(producer_, device_, [weak](const GenTLEvents::Event& event) {
        if (const auto self = std::static_pointer_cast<GenTLDevice>(weak.lock()))
            self->OnEvent(event);
    });
    return Status::Ok;
}

void GenTLDevice::BeginDisConnect() {
    events_.reset();
}

StatusCode GenTLDevice::DisConnectP() {
    events_.reset();
    for (const auto& stream : Streams())
        if (auto* module = dynamic_cast<GenTLStream*>(stream.get()))
            module->CloseModule();
    std::vector<std::shared_ptr<IStream>> none;
    UpdateStreams(none);
    // A call that does not return must not find its camera closed: it is closed when the call has returned.
    const milliseconds bound = producer_->IsHung() ? milliseconds(0) : UseBound;
    const auto closeLate = [producer = producer_](void* handle) {
        (void)producer->Call<&GenTLAPI::pDevClose>(handle);
    };
    void* const handle = device_.Take(bound, closeLate);
    void* const port = port_.Handle().Take(bound, [closeLate, handle](void*) {
        if (handle != nullptr)
            closeLate(handle);
    });
    if (handle != nullptr && port != nullptr)
        CloseDevice(producer_, handle);
    return Status::Ok;
}

std::shared_ptr<IStream> GenTLDevice::CreateStream(std::shared_ptr<GenTLAPI> producer, const char* streamId,
                                                   unsigned int index) {
    return std::make_shared<GenTLStream>(std::move(producer), streamId, this, index);
}

// Unlike cameras without a description of their kind, one behind a producer cannot be started without
// features.
StatusCode GenTLDevice::AcquisitionStartP(unsigned int streamIndex) {
    const auto configurer = ShareConfigurer();
    if (IsWritable() && (!configurer || !configurer->GetNodeMap()))
        return SetLastFailure(Status::NotAvailable, Name() + " has no features: " + FeaturesFailure());
    return GenIDevice::AcquisitionStartP(streamIndex);
}

// ---- registers ----

StatusCode GenTLDevice::ReadPort(unsigned long long address, unsigned char* buffer, unsigned int length) {
    return DeviceState() == DEVICE_STATE::Lost ? Status::DeviceLost : port_.Read(address, buffer, length);
}

StatusCode GenTLDevice::WritePort(unsigned long long address, const unsigned char* buffer,
                                  unsigned int length) {
    if (address == SleepAddress && length == sizeof(std::uint32_t))
        return Sleep(buffer);
    return DeviceState() == DEVICE_STATE::Lost ? Status::DeviceLost : port_.Write(address, buffer, length);
}

// In slices, so that it ends with the connection.
StatusCode GenTLDevice::Sleep(const unsigned char* bytes) {
    constexpr milliseconds Slice(20);
    std::uint32_t wanted = 0;
    std::memcpy(&wanted, bytes, sizeof(wanted));
    const auto end = std::chrono::steady_clock::now() + milliseconds(wanted);
    for (auto now = std::chrono::steady_clock::now(); now < end; now = std::chrono::steady_clock::now()) {
        if (!port_.Handle().IsOpen())
            return Status::NotConnected;
        std::this_thread::sleep_for(
            std::min(std::chrono::duration_cast<milliseconds>(end - now) + milliseconds(1), Slice));
    }
    return Status::Ok;
}

// ---- description ----

std::vector<std::string> GenTLDevice::DescriptionUrls() {
    std::vector<std::string> urls = port_.Urls();
    for (std::string& url : urls) {
        url.resize(std::min(url.size(), url.find('?')));
        if (ConfigBool(ConfigKeys::ReadXmlFromFile)) {
            const std::size_t scheme = std::min<std::size_t>(6, url.size()); // "local:"
            url = "file:" + url.substr(scheme, url.find(';', scheme) - scheme);
        }
    }
    return urls;
}

StatusCode GenTLDevice::GetXmlUrl(std::string& url) {
    const auto urls = DescriptionUrls();
    url = urls.empty() ? "" : urls.front();
    return Status::Ok;
}

StatusCode GenTLDevice::CreateConfigurer() {
    if (!IsConnected())
        return Status::WrongState;
    const std::shared_ptr<GenIDevice> self = shared_from_this();
    auto features = GenTLDescription::Build(DescriptionUrls(), port_, self, nullptr);
    (void)FailWithoutFeatures(features.failure);
    if (!features.genApi)
        return Status::WrongState;
    InstallConfigurer(std::make_shared<GenICamConfigurer>(std::move(features.genApi), this));
    return Status::Ok;
}

// ---- events ----

void GenTLDevice::OnEvent(const GenTLEvents::Event& event) {
    const auto configurer = ShareConfigurer();
    const auto map = configurer ? configurer->GetNodeMap() : nullptr;
    switch (event.type) {
    case GenTL::EVENT_ERROR:
        VxLoggerLog(LogLevel::Error, "SDK", "%s: the producer reports an error: %s: %s", Name().c_str(),
                    StatusText(static_cast<StatusCode>(event.number)).c_str(),
                    CleanText(event.value).c_str());
        return;
    case GenTL::EVENT_FEATURE_INVALIDATE:
        if (GenICam::INode* node = map ? map->GetNode(event.id) : nullptr)
            node->InvalidateNode();
        return;
    case GenTL::EVENT_FEATURE_CHANGE: // for TLParamsLocked, whose refusal changes nothing
        if (configurer)
            (void)configurer->SetNodeValue(event.id, event.value);
        return;
    default:
        if (map)
            for (GenICam::INode* node : map->GetNodes())
                if (node != nullptr && GenTLEvents::IsSameId(node->GetEventID(), event.id))
                    node->InvalidateNode();
    }
}

} // namespace VX3
