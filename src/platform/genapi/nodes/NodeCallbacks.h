// The callbacks of one node. Part of every node; the list is used with the map's lock held.
#pragma once

#include "GenApi/NodeCallback.h"

#include <memory>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

class NodeCallbacks {
public:
    // Shared so that a callback that is deregistered while it runs lives to its end.
    using List = std::vector<std::shared_ptr<CNodeCallback>>;

    CallbackHandleType Add(CNodeCallback* callback);
    // The callback that ended; to be destroyed without the lock. Null when there was none with this handle.
    std::shared_ptr<CNodeCallback> Remove(CallbackHandleType handle);
    bool IsEmpty() const { return list_.empty(); }
    const List& All() const { return list_; }

    // Calls each; what it throws is dropped.
    static void Fire(const List& callbacks, ECallbackType type);

private:
    List list_;
};

} // namespace Engine
} // namespace GenApi_3_2
