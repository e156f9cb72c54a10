#include "platform/clprotocol/PortProbe.h"

#include "platform/clprotocol/CDeviceID.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

namespace CLProtocol {

using namespace GenCp;

PortProbe::PortProbe(const std::string& portId, Clock::time_point end, std::function<bool()> abandoned)
    : portId_(portId), end_(end), abandoned_(std::move(abandoned)) {}

std::string PortProbe::Run() {
    PortMemory::Entry entry = PortMemory::Instance().Get(portId_);
    GenCpLink link(std::make_unique<SerialPort>(portId_));
    link.AbandonWhen(abandoned_);
    link.LimitUntil(end_);
    std::string name;
    try {
        const std::uint32_t before = entry.lastRate;
        const bool found = FindRate(link, entry, end_);
        if (!found || entry.lastRate != before)
            entry.hasModel = false; // another device, perhaps
        if (found)
            name = ReadName(link, entry);
    } catch (const PortError&) {
        PortMemory::Instance().Set(portId_, std::move(entry));
        return {};
    }
    PortMemory::Instance().Set(portId_, std::move(entry));
    return name;
}

// The last rate and those in turn take turns where the time suffices for one only: a device may be back at
// its last rate a little later, or have been exchanged.
bool PortProbe::FindRate(GenCpLink& link, PortMemory::Entry& entry, Clock::time_point end) {
    const auto answers = [&](std::uint32_t rate) {
        if (!link.Ask(rate))
            return false;
        entry.lastRate = rate;
        entry.othersFirst = false;
        entry.nextRate = 0;
        return true;
    };
    const std::uint32_t last = entry.lastRate;
    const bool lastFirst = last != 0 && !entry.othersFirst;
    if (lastFirst) {
        entry.othersFirst = true;
        if (answers(last))
            return true;
    }
    for (std::size_t asked = 0; asked < BaudRateCount && Clock::now() < end; ++asked) {
        const std::uint32_t rate = BaudRates[entry.nextRate];
        entry.nextRate = (entry.nextRate + 1) % BaudRateCount;
        if (rate == last)
            continue;
        entry.othersFirst = false;
        if (answers(rate))
            return true;
    }
    return last != 0 && !lastFirst && Clock::now() < end && answers(last);
}

std::string PortProbe::ReadName(GenCpLink& link, PortMemory::Entry& entry) {
    if (!entry.hasModel)
        entry.model = ReadText(link, Register::ModelName);
    entry.hasModel = true;
    const std::string serial = ReadText(link, Register::SerialNumber);
    entry.hasModel = false; // the next probe reads it anew
    return CDeviceID(entry.model, serial).ToString();
}

// Characters of a byte, or of two of which the upper is left out: names of cameras have no others.
std::string PortProbe::ReadText(GenCpLink& link, std::uint64_t address) {
    std::array<char, Register::TextSize> bytes{};
    link.Read(address, bytes.data(), bytes.size());
    const bool wide = bytes[0] == 0 && bytes[1] != 0;
    std::string text;
    for (std::size_t i = wide ? 1 : 0; i < bytes.size() && bytes[i] != 0; i += wide ? 2 : 1)
        text += bytes[i];
    return text;
}

} // namespace CLProtocol
