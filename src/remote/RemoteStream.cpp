#include "remote/RemoteStream.h"

#include "genicam/GenApiRI.h"
#include "genicam/GenICamConfigurer.h"
#include "genicam/XmlData.h"
#include "remote/RemoteDevice.h"
#include "vx3/core/Utilities.h"

#include <cstring>
#include <utility>

namespace VX3 {

RemoteStream::~RemoteStream() {
    Shutdown();
}

StatusCode RemoteStream::Tell(const char* word) {
    auto* const device = dynamic_cast<RemoteDevice*>(Parent());
    if (device == nullptr)
        return Status::WrongState;
    const StatusCode status = device->SendText(StringFormat("%s %u", word, StreamIndex()));
    return Failed(status) ? status : Status::Ok;
}

StatusCode RemoteStream::Pause() {
    return Tell("pause");
}

StatusCode RemoteStream::Restart() {
    return Tell("restart");
}

StatusCode RemoteStream::CreateConfigurer(const std::string& description) {
    std::unique_ptr<unsigned char[]> bytes(new unsigned char[description.size() + 1]());
    std::memcpy(bytes.get(), description.data(), description.size());
    auto xml = std::make_unique<XmlData>("RemoteStream.xml", std::move(bytes),
                                         static_cast<unsigned int>(description.size()));
    auto genApi =
        std::make_unique<GenApiRI>(std::move(xml), std::weak_ptr<IGenIObj>(weak_from_this()), "StreamPort");
    if (!genApi->GetNodeMap())
        return Status::NotAvailable;
    configurer_ = std::make_unique<GenICamConfigurer>(std::move(genApi), this);
    return Status::Ok;
}

StatusCode RemoteStream::ReadPort(unsigned long long address, unsigned char* buffer, unsigned int length) {
    auto* const device = dynamic_cast<RemoteDevice*>(Parent());
    return device == nullptr ? Status::WrongState : device->ReadPortEx(address, buffer, length);
}

StatusCode RemoteStream::WritePort(unsigned long long address, const unsigned char* buffer,
                                   unsigned int length) {
    auto* const device = dynamic_cast<RemoteDevice*>(Parent());
    return device == nullptr ? Status::WrongState : device->WritePortEx(address, buffer, length);
}

} // namespace VX3
