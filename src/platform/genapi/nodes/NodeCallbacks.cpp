#include "platform/genapi/nodes/NodeCallbacks.h"

#include <algorithm>
#include <utility>

namespace GenApi_3_2 {

void Deregister(CallbackHandleType hCallback) {
    auto* callback = reinterpret_cast<CNodeCallback*>(hCallback);
    if (callback && callback->GetNode())
        callback->GetNode()->DeregisterCallback(hCallback);
}

namespace Engine {

CallbackHandleType NodeCallbacks::Add(CNodeCallback* callback) {
    list_.emplace_back(callback, [](CNodeCallback* ended) { ended->Destroy(); });
    return reinterpret_cast<CallbackHandleType>(callback);
}

std::shared_ptr<CNodeCallback> NodeCallbacks::Remove(CallbackHandleType handle) {
    const auto found = std::find_if(list_.begin(), list_.end(), [&](const auto& callback) {
        return reinterpret_cast<CallbackHandleType>(callback.get()) == handle;
    });
    if (found == list_.end())
        return nullptr;
    std::shared_ptr<CNodeCallback> ended = std::move(*found);
    list_.erase(found);
    return ended;
}

void NodeCallbacks::Fire(const List& callbacks, ECallbackType type) {
    for (const auto& callback : callbacks) {
        try {
            (*callback)(type);
        } catch (...) { // the operation has happened, and its caller must not take it for failed
        }
    }
}

} // namespace Engine
} // namespace GenApi_3_2
