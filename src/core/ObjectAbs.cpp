#include "core/ObjectAbs.h"

#include "vx3/core/Utilities.h"

#include <atomic>

namespace VX3 {

namespace {
// Constant-initialised, so that objects built by static initialisers of any unit get ids too.
std::atomic<std::uint64_t> g_globalUid{0};
} // namespace

std::uint64_t CreateObjId() {
    return g_globalUid.fetch_add(1, std::memory_order_acq_rel);
}

ObjectAbs::ObjectAbs(unsigned int typeId, const char* name)
    : name_(name != nullptr ? name : ""), objId_(CreateObjId()), typeId_(typeId) {}

} // namespace VX3
