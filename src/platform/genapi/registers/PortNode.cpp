#include "platform/genapi/registers/PortNode.h"

#include "platform/genapi/base/NumberText.h"
#include "platform/genapi/base/ValueText.h"

namespace GenApi_3_2 {
namespace Engine {

using GenICam_3_2::AccessException;
using GenICam_3_2::GenericException;
using GenICam_3_2::InvalidArgumentException;

namespace {

[[noreturn]] void FailTransfer(const NodeBase& user, const char* verb, std::uint64_t address,
                               std::size_t length, const char* reason) {
    Fail<AccessException>(user, std::string(verb) + " " + std::to_string(length) + " bytes at " +
                                    IntegerText(static_cast<std::int64_t>(address), HexNumber) +
                                    " failed: " + reason);
}

// Runs a transfer; ports may throw a text where they do not know our exceptions.
template <class Function>
void Transfer(const NodeBase& user, const char* verb, std::uint64_t address, std::size_t length,
              const Function& transfer) {
    try {
        transfer();
    } catch (const GenericException&) {
        throw;
    } catch (const char* text) {
        FailTransfer(user, verb, address, length, text ? text : "unknown");
    } catch (const std::exception& failure) {
        FailTransfer(user, verb, address, length, failure.what());
    }
}

} // namespace

bool PortNode::Take(const Element& element) {
    if (element.id != ElementId::SwapEndianess)
        return false;
    swapsBytes_ = ParseBoolean(element.text).value_or(false);
    return true;
}

void PortNode::SetPortImpl(IPort* pPort) {
    Locked([&] {
        port_ = pPort;
        Context().InvalidateAll();
    });
}

void PortNode::Read(const NodeBase& user, std::uint64_t address, std::uint8_t* to, std::size_t length) {
    if (!port_)
        FailTransfer(user, "reading", address, length, "no port is connected");
    Transfer(user, "reading", address, length,
             [&] { port_->Read(to, static_cast<std::int64_t>(address), static_cast<std::int64_t>(length)); });
}

void PortNode::Write(const NodeBase& user, std::uint64_t address, const std::uint8_t* from,
                     std::size_t length) {
    if (!port_)
        FailTransfer(user, "writing", address, length, "no port is connected");
    Context().NextMoment();
    Transfer(user, "writing", address, length, [&] {
        port_->Write(from, static_cast<std::int64_t>(address), static_cast<std::int64_t>(length));
    });
}

void PortNode::Read(void* pBuffer, std::int64_t Address, std::int64_t Length) {
    Locked([&] {
        if (!pBuffer || Length < 0)
            Fail<InvalidArgumentException>(*this, "no buffer or a negative length");
        Read(*this, static_cast<std::uint64_t>(Address), static_cast<std::uint8_t*>(pBuffer),
             static_cast<std::size_t>(Length));
    });
}

void PortNode::Write(const void* pBuffer, std::int64_t Address, std::int64_t Length) {
    Locked([&] {
        if (!pBuffer || Length < 0)
            Fail<InvalidArgumentException>(*this, "no buffer or a negative length");
        Write(*this, static_cast<std::uint64_t>(Address), static_cast<const std::uint8_t*>(pBuffer),
              static_cast<std::size_t>(Length));
    });
}

} // namespace Engine
} // namespace GenApi_3_2
