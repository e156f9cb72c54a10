#include "platform/genapi/kinds/CommandNode.h"

#include "platform/genapi/base/NumberText.h"

#include <utility>

namespace GenApi_3_2 {
namespace Engine {

using GenICam_3_2::InvalidArgumentException;

bool CommandNode::Take(const Element& element) {
    if (element.id == ElementId::CommandValue)
        command_.SetConstant(*this, element);
    else if (element.id == ElementId::pCommandValue)
        command_.SetNode(Require(element, Role::Written));
    else
        return source_.Take(*this, element);
    return true;
}

void CommandNode::WriteInteger(std::int64_t, bool verify) {
    // A command value that the description leaves out is the usual 1.
    source_.Write(*this, command_.isGiven ? command_.Get() : 1, verify);
    isExecuting_ = true;
}

void CommandNode::Execute(bool Verify) {
    Write(Verify, [&] { SetInteger(1, Verify); });
}

bool CommandNode::IsDoneNow() {
    Enter();
    NodeBase* target = source_.Target();
    // Nothing to ask: no device behind it, or one that does not tell.
    if (!target || !IsReadable(AccessMode()))
        return true;
    return target->GetInteger(true) != (command_.isGiven ? command_.Get() : 1);
}

bool CommandNode::IsDone(bool Verify) {
    return Locked([&] {
        if (Verify && !IsAvailable(AccessMode()))
            RequireReadable();
        const bool isDone = IsDoneNow();
        if (isDone && std::exchange(isExecuting_, false)) {
            Changed();
            Context().FireChanged();
        }
        return isDone;
    });
}

void CommandNode::TakeShownText(const gcstring& text, bool verify) {
    const auto value = ParseBoolean(Strip(std::string_view(text.c_str(), text.size())));
    if (!value)
        Fail<InvalidArgumentException>(*this, std::string("'") + text.c_str() + "' is neither 1 nor 0");
    if (*value)
        SetInteger(1, verify);
}

} // namespace Engine
} // namespace GenApi_3_2
