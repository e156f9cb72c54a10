#include "simulated/publish/HostRoutes.h"

#include "gev/net/NICEnumerator.h"

namespace VX3 {

NET_PARAM HostRoutes::Toward(std::uint32_t asker, TimePoint now) {
    if (now >= forgetAt_) {
        known_.clear();
        forgetAt_ = now + std::chrono::seconds(1);
    }
    const auto found = known_.find(asker);
    if (found != known_.end())
        return found->second;
    if (known_.size() >= MostKnown)
        return {};
    return known_[asker] = NICEnumerator::ParamToward(asker);
}

} // namespace VX3
