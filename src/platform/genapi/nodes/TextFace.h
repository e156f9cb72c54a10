// The string interface over what a node type reads and writes; base of all nodes that hold a text.
#pragma once

#include "platform/genapi/nodes/NodeBase.h"

#include <string>

namespace GenApi_3_2 {
namespace Engine {

class TextFace : public NodeBase, public IString {
public:
    TextFace(NodeContext& context, const NodeRecord& record) : NodeBase(context, record, intfIString) {}

    void SetValue(const gcstring& Value, bool Verify = true) override;
    IString& operator=(const gcstring& Value) override;
    gcstring GetValue(bool Verify = false, bool IgnoreCache = false) override;
    gcstring operator()() override { return GetValue(); }
    gcstring operator*() override { return GetValue(); }
    std::int64_t GetMaxLength() override;

    // Bytes, lock held.
    virtual std::int64_t MaxLength() = 0;

protected:
    gcstring ShownText(bool ignoreCache) override;
    void TakeShownText(const gcstring& text, bool verify) override;
};

} // namespace Engine
} // namespace GenApi_3_2
