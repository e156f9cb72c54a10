#include "gentl/GenTLPort.h"

#include "gentl/GenTLInfo.h"
#include "vx3/core/LastFailure.h"

#include <algorithm>

namespace VX3 {

namespace {

constexpr std::chrono::milliseconds InfoBound(5000);
constexpr unsigned int MaxUrls = 64;

// One access, with memory of its own: a producer that returns late must not find the caller's gone.
struct Access {
    GenTL::GC_ERROR code = GenTL::GC_ERR_SUCCESS;
    std::string why;
    std::size_t moved = 0;
    std::vector<unsigned char> bytes;
};

} // namespace

StatusCode GenTLPort::Read(unsigned long long address, unsigned char* buffer, unsigned int length) {
    const auto job = [producer = producer_, use = handle_.Borrow(), address, length] {
        Access access;
        access.bytes.resize(length);
        access.moved = length;
        access.code = producer->Call<&GenTLAPI::pGCReadPort>(
            use.Get(), std::uint64_t{address}, static_cast<void*>(access.bytes.data()), &access.moved);
        if (access.code != GenTL::GC_ERR_SUCCESS)
            access.why = producer->Explain(access.code);
        return access;
    };
    if (!handle_.IsOpen())
        return Status::NotConnected;
    const auto access = producer_->Ask("reading registers", AccessBound, job);
    if (!access)
        return SetLastFailure(Status::TimeOut, producer_->Name() + " does not return from GCReadPort");
    if (access->code == GenTL::GC_ERR_SUCCESS)
        std::copy_n(access->bytes.begin(), std::min<std::size_t>(access->moved, length), buffer);
    return Result("GCReadPort", access->code, access->why, access->moved, length);
}

StatusCode GenTLPort::Write(unsigned long long address, const unsigned char* buffer, unsigned int length) {
    const auto job = [producer = producer_, use = handle_.Borrow(), address,
                      bytes = std::vector<unsigned char>(buffer, buffer + length)] {
        Access access;
        access.moved = bytes.size();
        access.code = producer->Call<&GenTLAPI::pGCWritePort>(
            use.Get(), std::uint64_t{address}, static_cast<const void*>(bytes.data()), &access.moved);
        if (access.code != GenTL::GC_ERR_SUCCESS)
            access.why = producer->Explain(access.code);
        return access;
    };
    if (!handle_.IsOpen())
        return Status::NotConnected;
    const auto access = producer_->Ask("writing registers", AccessBound, job);
    if (!access)
        return SetLastFailure(Status::TimeOut, producer_->Name() + " does not return from GCWritePort");
    return Result("GCWritePort", access->code, access->why, access->moved, length);
}

StatusCode GenTLPort::Result(const char* what, GenTL::GC_ERROR code, const std::string& why,
                             std::size_t moved, unsigned int length) const {
    if (code == GenTL::GC_ERR_SUCCESS)
        return static_cast<StatusCode>(std::min<std::size_t>(moved, length));
    // A code that no producer may give must not pass for a count.
    return SetLastFailure(code < 0 ? code : Status::Generic, producer_->Name() + ": " + what + ": " + why);
}

std::vector<std::string> GenTLPort::Urls() {
    const auto job = [producer = producer_, use = handle_.Borrow()] {
        std::vector<std::string> urls;
        std::uint32_t count = 0;
        if (!use || producer->Call<&GenTLAPI::pGCGetNumPortURLs>(use.Get(), &count) != GenTL::GC_ERR_SUCCESS)
            return urls;
        for (std::uint32_t index = 0; index < std::min(count, MaxUrls); ++index) {
            std::string url;
            const auto code = ReadText(url, [&](std::int32_t* type, void* buffer, std::size_t* size) {
                return producer->Call<&GenTLAPI::pGCGetPortURLInfo>(
                    use.Get(), index, std::int32_t{GenTL::URL_INFO_URL}, type, buffer, size);
            });
            if (code == GenTL::GC_ERR_SUCCESS)
                urls.push_back(std::move(url));
        }
        return urls;
    };
    return producer_->Ask("asking for descriptions", InfoBound, job).value_or(std::vector<std::string>());
}

std::string GenTLPort::PortName() {
    const auto job = [producer = producer_, use = handle_.Borrow()] {
        std::string name;
        if (use)
            (void)ReadText(name, [&](std::int32_t* type, void* buffer, std::size_t* size) {
                return producer->Call<&GenTLAPI::pGCGetPortInfo>(
                    use.Get(), std::int32_t{GenTL::PORT_INFO_PORTNAME}, type, buffer, size);
            });
        return name;
    };
    return producer_->Ask("asking for the port's name", InfoBound, job).value_or(std::string());
}

} // namespace VX3
