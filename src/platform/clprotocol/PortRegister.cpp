#include "platform/clprotocol/PortRegister.h"

#include <mutex>
#include <set>

namespace CLProtocol {

namespace {

std::mutex& Lock() {
    static std::mutex mutex;
    return mutex;
}

std::set<dev_t>& Open() {
    static std::set<dev_t> devices;
    return devices;
}

bool Enter(dev_t device) {
    const std::lock_guard<std::mutex> lock(Lock());
    return Open().insert(device).second;
}

} // namespace

PortRegister::Claim::Claim(dev_t device) : device_(device), held_(Enter(device)) {}

PortRegister::Claim::~Claim() {
    if (!held_)
        return;
    const std::lock_guard<std::mutex> lock(Lock());
    Open().erase(device_);
}

} // namespace CLProtocol
