// The part of NodeBase that keeps and fires callbacks.
#include "platform/genapi/NodeBase.h"
#include "platform/genapi/NodeMap.h"

#include <algorithm>
#include <exception>

namespace GenApi_3_2 {

void Deregister(CallbackHandleType hCallback) {
    auto* callback = reinterpret_cast<CNodeCallback*>(hCallback);
    if (callback && callback->GetNode())
        callback->GetNode()->DeregisterCallback(hCallback);
}

namespace Engine {

// Shared so that a callback that is deregistered while it runs lives to its end.
struct NodeBase::Callbacks {
    std::vector<std::shared_ptr<CNodeCallback>> list;
};

NodeBase::NodeBase(NodeMap& map, const NodeRecord& record, EInterfaceType interfaceType)
    : interfaceType_(interfaceType), map_(map), record_(record) {}

NodeBase::~NodeBase() = default;

CallbackHandleType NodeBase::RegisterCallback(CNodeCallback* pCallback) {
    if (!pCallback)
        return 0;
    return Locked([&] {
        if (!callbacks_)
            callbacks_ = std::make_unique<Callbacks>();
        callbacks_->list.emplace_back(pCallback, [](CNodeCallback* callback) { callback->Destroy(); });
        return reinterpret_cast<CallbackHandleType>(pCallback);
    });
}

bool NodeBase::DeregisterCallback(CallbackHandleType hCallback) {
    std::shared_ptr<CNodeCallback> ended; // destroyed without the lock
    return Locked([&] {
        if (!callbacks_)
            return false;
        auto& list = callbacks_->list;
        const auto found = std::find_if(list.begin(), list.end(), [&](const auto& callback) {
            return reinterpret_cast<CallbackHandleType>(callback.get()) == hCallback;
        });
        if (found == list.end())
            return false;
        ended = std::move(*found);
        list.erase(found);
        return true;
    });
}

void NodeBase::Fire(ECallbackType type) {
    std::vector<std::shared_ptr<CNodeCallback>> list;
    Locked([&] {
        if (callbacks_)
            list = callbacks_->list;
    });
    std::exception_ptr failure;
    for (const auto& callback : list) {
        try {
            (*callback)(type);
        } catch (...) {
            failure = std::current_exception();
        }
    }
    if (failure)
        std::rethrow_exception(failure);
}

} // namespace Engine
} // namespace GenApi_3_2
