// Callbacks fired when a node's value may have changed.
#pragma once

#include "GenApi/INode.h"

#include <memory>
#include <type_traits>

namespace GenApi_3_2 {

class CNodeCallback {
public:
    CNodeCallback(INode* pNode, ECallbackType CallbackType) : node_(pNode), callbackType_(CallbackType) {}
    virtual ~CNodeCallback() = default;
    // Calls the client when `CallbackType` is the one this callback was made for. What the client throws is
    // dropped: what changed the node has happened.
    virtual void operator()(ECallbackType CallbackType) const = 0;
    // Ends the callback's life.
    virtual void Destroy() = 0;
    INode* GetNode() const { return node_; }
    ECallbackType GetCallbackType() const { return callbackType_; }

private:
    INode* node_;
    ECallbackType callbackType_;
};

template <class Function>
class Function_NodeCallback : public CNodeCallback {
public:
    Function_NodeCallback(INode* pNode, const Function& function, ECallbackType CallbackType)
        : CNodeCallback(pNode, CallbackType), function_(function) {}
    void operator()(ECallbackType CallbackType) const override {
        if (CallbackType == GetCallbackType())
            function_(GetNode());
    }
    void Destroy() override { std::unique_ptr<CNodeCallback>(this).reset(); }

private:
    Function function_;
};

template <class Client, class Member>
class Member_NodeCallback : public CNodeCallback {
public:
    Member_NodeCallback(INode* pNode, Client& client, Member member, ECallbackType CallbackType)
        : CNodeCallback(pNode, CallbackType), client_(client), member_(member) {}
    void operator()(ECallbackType CallbackType) const override {
        if (CallbackType == GetCallbackType())
            (client_.*member_)(GetNode());
    }
    void Destroy() override { std::unique_ptr<CNodeCallback>(this).reset(); }

private:
    Client& client_;
    Member member_;
};

// `function` is called with the changed node. The handle goes to Deregister.
template <class Function>
CallbackHandleType Register(INode* pNode, const Function& function,
                            ECallbackType CallbackType = cbPostInsideLock) {
    return pNode->RegisterCallback(
        std::make_unique<Function_NodeCallback<Function>>(pNode, function, CallbackType).release());
}

// `(client.*member)(INode*)` is called with the changed node.
template <class Client, class Member, std::enable_if_t<std::is_member_function_pointer_v<Member>, int> = 0>
CallbackHandleType Register(INode* pNode, Client& client, Member member,
                            ECallbackType CallbackType = cbPostInsideLock) {
    return pNode->RegisterCallback(
        std::make_unique<Member_NodeCallback<Client, Member>>(pNode, client, member, CallbackType).release());
}

// Ends a callback; the node must still live.
void Deregister(CallbackHandleType hCallback);

} // namespace GenApi_3_2
