#include "platform/clprotocol/PortMemory.h"

#include <utility>

namespace CLProtocol {

PortMemory& PortMemory::Instance() {
    static PortMemory instance;
    return instance;
}

PortMemory::Entry PortMemory::Get(const std::string& port) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = entries_.find(port);
    return found != entries_.end() ? found->second : Entry();
}

void PortMemory::Set(const std::string& port, Entry entry) {
    const std::lock_guard<std::mutex> lock(mutex_);
    entries_[port] = std::move(entry);
}

void PortMemory::Expect(const std::string& port, std::uint32_t rate) {
    const std::lock_guard<std::mutex> lock(mutex_);
    Entry& entry = entries_[port];
    entry = Entry();
    entry.lastRate = rate;
}

} // namespace CLProtocol
