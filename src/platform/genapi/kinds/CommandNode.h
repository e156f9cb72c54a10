// Command: writes its command value and waits for the device to replace it.
#pragma once

#include "platform/genapi/nodes/NodeBase.h"
#include "platform/genapi/nodes/ValueSource.h"

namespace GenApi_3_2 {
namespace Engine {

class CommandNode final : public NodeBase, public ICommand {
public:
    CommandNode(NodeContext& context, const NodeRecord& record) : NodeBase(context, record, intfICommand) {}

    void Execute(bool Verify = true) override;
    void operator()() override { Execute(); }
    // Always asks the device. The first call that finds the command done fires the callbacks.
    bool IsDone(bool Verify = true) override;

    ECachingMode OwnCaching() const override { return NoCache; }

protected:
    bool Take(const Element& element) override;
    void Finish() override { source_.Finish(*this); }
    std::int64_t ReadInteger(bool) override { return IsDoneNow() ? 1 : 0; }
    void WriteInteger(std::int64_t value, bool verify) override;
    void VerifyInteger(std::int64_t) override {}
    EAccessMode InnerAccess() const override { return source_.Access(); }
    gcstring ShownText(bool) override { return IsDoneNow() ? "1" : "0"; }
    void TakeShownText(const gcstring& text, bool verify) override;

private:
    bool IsDoneNow();

    mutable ValueSource<std::int64_t> source_;
    Operand<std::int64_t> command_;
    bool isExecuting_ = false;
};

} // namespace Engine
} // namespace GenApi_3_2
