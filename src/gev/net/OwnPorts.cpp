#include "gev/net/OwnPorts.h"

#include "gev/net/NICEnumerator.h"
#include "vx3/core/Mutex.h"

#include <set>

namespace VX3 {

namespace {

struct List {
    Mutex mutex;
    std::multiset<std::uint16_t> ports VX3_GUARDED_BY(mutex);
};

List& Ports() {
    static List list;
    return list;
}

} // namespace

void OwnPorts::Add(std::uint16_t port) {
    List& list = Ports();
    MutexLock lock(list.mutex);
    list.ports.insert(port);
}

void OwnPorts::Remove(std::uint16_t port) {
    List& list = Ports();
    MutexLock lock(list.mutex);
    const auto found = list.ports.find(port);
    if (found != list.ports.end())
        list.ports.erase(found);
}

bool OwnPorts::IsOwn(std::uint32_t ip, std::uint16_t port) {
    {
        List& list = Ports();
        MutexLock lock(list.mutex);
        if (list.ports.count(port) == 0)
            return false;
    }
    return NICEnumerator::IsOwnAddress(ip);
}

} // namespace VX3
