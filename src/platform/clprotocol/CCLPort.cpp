#include "platform/clprotocol/CCLPort.h"

#include "platform/clprotocol/CDeviceID.h"
#include "platform/clprotocol/DescriptionFetch.h"
#include "platform/clprotocol/PortList.h"
#include "platform/clprotocol/PortMemory.h"
#include "platform/clprotocol/PortProbe.h"

#include <mutex>
#include <utility>

namespace CLProtocol {

using namespace GenCp;

namespace {

// The device may be at any rate: a host that died did not put it back, and it may just give that host up.
constexpr std::chrono::milliseconds FindRateTime{5000};

struct Patterns {
    std::mutex mutex;
    std::string text;
};

Patterns& SharedPatterns() {
    static Patterns patterns;
    return patterns;
}

} // namespace

// Ports ----------------------------------------------------------------------------------------------------

void CCLPort::SetPortPatterns(const std::string& patterns) {
    const std::lock_guard<std::mutex> lock(SharedPatterns().mutex);
    SharedPatterns().text = patterns;
}

std::vector<std::string> CCLPort::GetPortIDs() {
    std::string text;
    {
        const std::lock_guard<std::mutex> lock(SharedPatterns().mutex);
        text = SharedPatterns().text;
    }
    return PortList::Expand(text);
}

std::vector<std::string> CCLPort::ExpandPorts(const std::string& patterns) {
    return PortList::Expand(patterns);
}

std::vector<std::string> CCLPort::GetDeviceIDTemplates() {
    return {CDeviceID::Template};
}

std::string CCLPort::ProbeDevice(const std::string& portId, const std::string& deviceIdTemplate,
                                 unsigned int timeoutMs, std::function<bool()> abandoned) {
    const auto end = GenCpLink::Clock::now() + std::chrono::milliseconds(timeoutMs);
    if (deviceIdTemplate != CDeviceID::Template)
        return {};
    return PortProbe(portId, end, std::move(abandoned)).Run();
}

// Connection -----------------------------------------------------------------------------------------------

CCLPort::~CCLPort() {
    if (!session_)
        return;
    abandoned_ = false;
    if (!forgotten_)
        session_->Close();
    // Before the port is free: whoever takes it next begins at that rate.
    PortMemory::Instance().Expect(portId_, session_->RateAfterwards(forgotten_));
}

void CCLPort::Connect(const std::string& portId, const std::string& deviceId) {
    portId_ = portId;
    link_ = std::make_unique<GenCpLink>(std::make_unique<SerialPort>(portId));
    link_->AbandonWhen([this] { return abandoned_.load(); });
    PortMemory::Entry entry = PortMemory::Instance().Get(portId);
    if (!PortProbe::FindRate(*link_, entry, GenCpLink::Clock::now() + FindRateTime))
        throw PortError(Failure::Silent, portId + ": no device answers");
    CheckIdentity(deviceId);
    session_ = std::make_unique<GenCpSession>(*link_);
    session_->Open();
    note_ = session_->Note();
}

void CCLPort::CheckIdentity(const std::string& deviceId) {
    model_ = PortProbe::ReadText(*link_, Register::ModelName);
    const CDeviceID there(model_, PortProbe::ReadText(*link_, Register::SerialNumber));
    if (there.ToString() != deviceId)
        throw PortError(Failure::OtherDevice, portId_ + ": " + there.GetShortDeviceID() +
                                                  " answers instead of " +
                                                  CDeviceID::FromString(deviceId).GetShortDeviceID());
}

GenCpLink& CCLPort::Link() const {
    if (!link_)
        throw PortError(Failure::Argument, "not connected");
    return *link_;
}

std::chrono::milliseconds CCLPort::HeartbeatTimeout() const {
    return session_ ? session_->HeartbeatTimeout() : std::chrono::milliseconds(0);
}

std::uint32_t CCLPort::BaudRate() const {
    return Link().Baud();
}

std::string CCLPort::TakeNote() {
    return std::exchange(note_, {});
}

// Registers ------------------------------------------------------------------------------------------------

void CCLPort::Read(void* buffer, std::uint64_t address, std::size_t length) {
    Link().Read(address, buffer, length);
}

void CCLPort::Write(const void* buffer, std::uint64_t address, std::size_t length) {
    Link().Write(address, buffer, length);
}

void CCLPort::KeepAlive(std::chrono::milliseconds silence) {
    if (GenCpLink::Clock::now() - Link().LastHeard() >= silence)
        (void)Link().Read32(Register::Version);
}

// Description ----------------------------------------------------------------------------------------------

void CCLPort::FindEntries() {
    if (entries_.empty())
        entries_ = DescriptionFetch(Link()).Entries();
}

std::vector<std::string> CCLPort::GetXMLIDs() {
    FindEntries();
    std::vector<std::string> ids;
    ids.reserve(entries_.size());
    for (const ManifestEntry& entry : entries_)
        ids.push_back(DescriptionFetch::IdOf(entry, model_));
    return ids;
}

std::string CCLPort::GetXML(const std::string& xmlId, bool fromDevice) {
    if (!fromDevice)
        throw PortError(Failure::Argument, "descriptions are fetched from the device only");
    FindEntries();
    for (const ManifestEntry& entry : entries_)
        if (DescriptionFetch::IdOf(entry, model_) == xmlId)
            return DescriptionFetch(Link()).Text(entry, note_);
    throw PortError(Failure::Argument, portId_ + ": no description \"" + xmlId + "\"");
}

} // namespace CLProtocol
