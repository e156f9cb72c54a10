#include "remote/RemoteDevice.h"

#include "core/DefaultConfig.h"
#include "gev/protocol/RemoteAddresses.h"
#include "remote/RemoteStream.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/LastFailure.h"
#include "vx3/core/Logger.h"

#include <cstring>
#include <fstream>
#include <iterator>
#include <vector>

namespace VX3 {

namespace {

constexpr unsigned long long ServerEnd = 0x1000;
constexpr std::streamoff LargestDescription = 0x6400000;

// The description itself where the text is one, else the file's that it names; empty where that cannot be
// read.
std::string DescriptionOf(const std::string& text) {
    if (text.empty() || text.front() == '<')
        return text;
    std::ifstream file(text, std::ios::binary | std::ios::ate);
    if (!file || file.tellg() > LargestDescription)
        return {};
    file.seekg(0);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// Memory is written in whole words: what lies behind the bytes in the last one stays as it is.
StatusCode WritePart(GevCmdHelper& helper, unsigned long long address, const unsigned char* buffer,
                     unsigned int length) {
    std::vector<unsigned char> words(Gvcp::RoundUp4(length));
    std::memcpy(words.data(), buffer, length);
    // Where nothing can be read nothing is overwritten either.
    (void)helper.ReadMemory(address + length, words.data() + length, words.size() - length, false);
    const StatusCode status = helper.WriteMemory(address, words.data(), words.size());
    return Failed(status) ? status : static_cast<StatusCode>(length);
}

} // namespace

RemoteDevice::RemoteDevice(const std::string& name, const NET_PARAM& local,
                           const GVCP_DISCOVERY_ACK& discovery, IDevice* parent, std::uint16_t port,
                           bool noFilter, DEVICE_STATE state)
    : GevDevice(TypeIds::SubDevice + static_cast<unsigned int>(IntfDevType::Remote), name, local, discovery,
                parent, noFilter, port, state) {}

RemoteDevice::~RemoteDevice() {
    Shutdown();
}

std::string RemoteDevice::UniqueName() const {
    return GevDevice::UniqueName() + ":" + std::to_string(ControlPort());
}

StatusCode RemoteDevice::ReadPort(unsigned long long address, unsigned char* buffer, unsigned int length) {
    StatusCode reason = Status::Ok;
    const auto helper = UsableHelper(reason);
    if (!helper)
        return reason;
    if (length != 4)
        return helper->ReadMemory(address + RemoteAddresses::RemoteBit, buffer, length, false);
    std::uint32_t value = 0;
    const StatusCode result = helper->ReadRegister(address + RemoteAddresses::RemoteBit, value);
    if (Failed(result))
        return result;
    if (address < ServerEnd)
        Wire::Store(buffer, value);
    else
        std::memcpy(buffer, &value, sizeof(value));
    return result;
}

StatusCode RemoteDevice::WritePort(unsigned long long address, const unsigned char* buffer,
                                   unsigned int length) {
    if (!IsWritable())
        return Status::NotAvailable;
    StatusCode reason = Status::Ok;
    const auto helper = UsableHelper(reason);
    if (!helper)
        return reason;
    if (length % 4 != 0)
        return WritePart(*helper, address + RemoteAddresses::RemoteBit, buffer, length);
    if (length != 4)
        return helper->WriteMemory(address + RemoteAddresses::RemoteBit, buffer, length);
    std::uint32_t value = Wire::Load<std::uint32_t>(buffer);
    if (address >= ServerEnd)
        std::memcpy(&value, buffer, sizeof(value));
    return helper->WriteRegister(address + RemoteAddresses::RemoteBit, value);
}

StatusCode RemoteDevice::ReadPortEx(unsigned long long address, unsigned char* buffer, unsigned int length) {
    StatusCode reason = Status::Ok;
    const auto helper = UsableHelper(reason);
    return helper ? helper->ReadMemoryEx(address, buffer, length, false) : reason;
}

StatusCode RemoteDevice::WritePortEx(unsigned long long address, const unsigned char* buffer,
                                     unsigned int length) {
    if (!IsWritable())
        return Status::NotAvailable;
    StatusCode reason = Status::Ok;
    const auto helper = UsableHelper(reason);
    return helper ? helper->WriteMemoryEx(address, buffer, length) : reason;
}

StatusCode RemoteDevice::SendText(const std::string& text) {
    return GevDevice::WritePort(RemoteAddresses::TextCommands,
                                reinterpret_cast<const unsigned char*>(text.data()),
                                static_cast<unsigned int>(text.size()));
}

std::shared_ptr<IStream> RemoteDevice::CreateStream(const char* name, unsigned int index, bool useFilter) {
    auto stream = std::make_shared<RemoteStream>(name, this, index, useFilter, this, ControlPort());
    const std::string key = ConfigString(ConfigKeys::RemoteStreamXml);
    if (!key.empty() && Failed(stream->CreateConfigurer(DescriptionOf(key))))
        VxLoggerLog(LogLevel::Error, "SDK",
                    "%s: stream %u has no features: the key \"%s\" holds no description", Name().c_str(),
                    index, ConfigKeys::RemoteStreamXml);
    return stream;
}

} // namespace VX3
