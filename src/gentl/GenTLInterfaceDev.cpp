#include "gentl/GenTLInterfaceDev.h"

#include "core/DefaultConfig.h"
#include "genicam/GenApiRI.h"
#include "genicam/GenICamConfigurer.h"
#include "gentl/GenTLDescription.h"
#include "gentl/GenTLInfo.h"
#include "gentl/GenTLRemotableDevice.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/Utilities.h"

#include <algorithm>

namespace VX3 {

using std::chrono::milliseconds;

namespace {

constexpr unsigned int GenTLInterfaceType =
    TypeIds::InterfaceDevice + static_cast<unsigned int>(IntfDevType::GenTL);
constexpr milliseconds DeviceListWait(2000);
constexpr milliseconds InfoBound(5000);

Mutex g_observerMutex;
GenTLInterfaceDev::Observer g_observer VX3_GUARDED_BY(g_observerMutex);

void TellObserver(const SubDeviceEvents& events) {
    if (!ConfigBool(ConfigKeys::CreateRemoteDevice))
        return;
    GenTLInterfaceDev::Observer observer;
    {
        MutexLock lock(g_observerMutex);
        observer = g_observer;
    }
    if (!observer)
        return;
    for (const SUB_DEVICE_EVENT wanted : {SUB_DEVICE_EVENT::Lost, SUB_DEVICE_EVENT::Found})
        for (const auto& [event, devices] : events)
            if (event == wanted)
                for (const auto& device : devices)
                    observer(event, device);
}

} // namespace

void GenTLInterfaceDev::Observe(Observer observer) {
    MutexLock lock(g_observerMutex);
    g_observer.swap(observer);
}

GenTLInterfaceDev::GenTLInterfaceDev(std::shared_ptr<GenTLAPI> producer, const char* id,
                                     const char* displayName)
    : InterfaceDevAbs(GenTLInterfaceType, displayName),
      producer_(std::move(producer)),
      id_(id),
      interface_(GenTLInterface::Open(producer_, id_)) {}

GenTLInterfaceDev::~GenTLInterfaceDev() {
    MonitorSubDevices(false, 0, 0, {});
    std::list<std::shared_ptr<IDevice>> gone;
    for (const auto& known : SubDevices())
        if (const auto camera = std::dynamic_pointer_cast<GenTLRemotableDevice>(known.lock()))
            gone.push_back(camera);
    TellObserver({{SUB_DEVICE_EVENT::Lost, gone}});
    for (const auto& camera : gone)
        static_cast<GenTLRemotableDevice&>(*camera).DisConnectA();
    Shutdown();
}

// ---- registers ----

StatusCode GenTLInterfaceDev::ReadPort(unsigned long long address, unsigned char* buffer,
                                       unsigned int length) {
    return interface_ ? interface_->Port().Read(address, buffer, length) : Status::NotConnected;
}

StatusCode GenTLInterfaceDev::WritePort(unsigned long long address, const unsigned char* buffer,
                                        unsigned int length) {
    return interface_ ? interface_->Port().Write(address, buffer, length) : Status::NotConnected;
}

StatusCode GenTLInterfaceDev::GetXmlUrl(std::string& url) {
    const auto urls = interface_ ? interface_->Port().Urls() : std::vector<std::string>();
    url = urls.empty() ? "" : urls.front().substr(0, urls.front().find('?'));
    return Status::Ok;
}

StatusCode GenTLInterfaceDev::CreateConfigurer() {
    if (!IsConnected() || !interface_)
        return Status::WrongState;
    const std::shared_ptr<GenIDevice> self = shared_from_this();
    auto features =
        GenTLDescription::Build(interface_->Port().Urls(), interface_->Port(), self, "InterfacePort");
    (void)FailWithoutFeatures(features.failure);
    if (!features.genApi)
        return Status::WrongState;
    InstallConfigurer(std::make_shared<GenICamConfigurer>(std::move(features.genApi), this));
    return Status::Ok;
}

std::list<std::pair<std::string, std::string>> GenTLInterfaceDev::GetInfo() const {
    const auto job = [producer = producer_] {
        const auto text = [&](std::int32_t command) {
            std::string value;
            (void)ReadText(value, [&](std::int32_t* type, void* buffer, std::size_t* size) {
                return producer->Call<&GenTLAPI::pGCGetInfo>(command, type, buffer, size);
            });
            return CleanText(std::move(value));
        };
        const auto number = [&](std::int32_t command) {
            std::uint64_t value = 0;
            (void)ReadNumber(value, [&](std::int32_t* type, void* buffer, std::size_t* size) {
                return producer->Call<&GenTLAPI::pGCGetInfo>(command, type, buffer, size);
            });
            return static_cast<int>(value);
        };
        return std::list<std::pair<std::string, std::string>>{
            {"VendorName", text(GenTL::TL_INFO_VENDOR)},
            {"ModelName", text(GenTL::TL_INFO_MODEL)},
            {"Version", text(GenTL::TL_INFO_VERSION)},
            {"TLVersion", StringFormat("%d.%d", number(GenTL::TL_INFO_GENTL_VER_MAJOR),
                                       number(GenTL::TL_INFO_GENTL_VER_MINOR))}};
    };
    auto items = producer_->Ask("asking who it is", InfoBound, job)
                     .value_or(std::list<std::pair<std::string, std::string>>());
    items.emplace_front("Name", Name());
    return items;
}

// ---- cameras ----

// A camera that is listed as it was stays the same object, which spares the producer the questions who it is.
std::list<std::shared_ptr<IDevice>> GenTLInterfaceDev::EnumSubDevices(unsigned int) {
    if (!interface_ || producer_->IsHung())
        return {};
    const auto entries = GenTLInterface::ListDevices(interface_, DeviceListWait);
    MutexLock lock(foundMutex_);
    if (!entries) {
        if (producer_->IsHung())
            found_.clear();
        return found_;
    }
    std::list<std::shared_ptr<IDevice>> found;
    for (const auto& entry : *entries) {
        const auto known = std::find_if(found_.begin(), found_.end(), [&](const auto& device) {
            return device->UniqueName() == entry.id && device->DeviceState() != DEVICE_STATE::Lost;
        });
        if (known != found_.end())
            found.push_back(*known);
        else
            found.push_back(std::make_shared<GenTLRemotableDevice>(
                producer_, entry.id.c_str(), CleanText(entry.displayName).c_str(), this));
    }
    found_ = found;
    return found;
}

SubDeviceEvents GenTLInterfaceDev::UpdateSubDevicesA(std::list<std::shared_ptr<IDevice>> found, bool) {
    SubDeviceEvents events = InterfaceDevAbs::UpdateSubDevicesA(std::move(found), true);
    for (const auto& [event, devices] : events)
        if (event == SUB_DEVICE_EVENT::Lost)
            for (const auto& device : devices)
                if (const auto camera = std::dynamic_pointer_cast<GenTLDevice>(device))
                    camera->MarkLost();
    TellObserver(events);
    return events;
}

} // namespace VX3
