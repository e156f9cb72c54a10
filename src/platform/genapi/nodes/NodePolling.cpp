#include "platform/genapi/nodes/NodePolling.h"

#include "platform/genapi/base/NumberText.h"
#include "platform/genapi/nodes/NodeBase.h"

#include <algorithm>

namespace GenApi_3_2 {
namespace Engine {

void NodePolling::Take(NodeBase& owner, const Element& element) {
    if (element.id == ElementId::pBlockPolling)
        block_ = owner.Context().NodeAt(element.target);
    else if (const auto time = ParseInteger(element.text); time && *time > 0)
        time_ = *time;
}

bool NodePolling::Advance(std::int64_t elapsed) {
    sinceLast_ += std::clamp<std::int64_t>(elapsed, 0, time_ - sinceLast_);
    if (sinceLast_ < time_ || IsBlocked())
        return false;
    sinceLast_ = 0;
    return true;
}

bool NodePolling::IsBlocked() const {
    try {
        return block_ && block_->GetInteger() != 0;
    } catch (const GenICam_3_2::GenericException&) {
        return false;
    }
}

} // namespace Engine
} // namespace GenApi_3_2
