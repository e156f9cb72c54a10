#include "simulated/camera/CommandLog.h"

namespace VX3 {
namespace Simulated {

SeenCommand Describe(const Gvcp::CommandPacket& command, std::size_t datagramSize) {
    using Gvcp::Command;
    const Gvcp::CommandHeader& header = command.header;
    SeenCommand seen{header.command, header.flags, header.length, header.reqId, datagramSize, 0, 0, {}};
    std::uint32_t address = 0;
    Gvcp::MemoryRequest read;
    Gvcp::MemoryData write;
    switch (header.command) {
    case Command::ReadReg:
        (void)Gvcp::DecodeReadReg(command.payload, address);
        seen.address = address;
        break;
    case Command::WriteReg:
        (void)Gvcp::DecodeWriteReg(command.payload, address, seen.value);
        seen.address = address;
        break;
    case Command::ReadMem:
    case Command::ReadMemEx:
        (void)Gvcp::DecodeReadMem(command.payload, header.command == Command::ReadMemEx, read);
        seen.address = read.address;
        seen.value = read.count;
        break;
    case Command::WriteMem:
    case Command::WriteMemEx:
        (void)Gvcp::DecodeWriteMem(command.payload, header.command == Command::WriteMemEx, write);
        seen.address = write.address;
        seen.data.assign(write.data.data, write.data.data + write.data.size);
        break;
    default:
        break;
    }
    return seen;
}

void CommandLog::Add(SeenCommand command) {
    MutexLock lock(mutex_);
    commands_.push_back(std::move(command));
    if (commands_.size() > capacity_)
        commands_.pop_front();
}

std::vector<SeenCommand> CommandLog::All() const {
    MutexLock lock(mutex_);
    return {commands_.begin(), commands_.end()};
}

void CommandLog::Clear() {
    MutexLock lock(mutex_);
    commands_.clear();
}

} // namespace Simulated
} // namespace VX3
