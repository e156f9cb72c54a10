#include "grabber/KdNodes.h"

#include "core/LogListener.h"
#include "vx3/core/LastFailure.h"
#include "vx3/core/Logger.h"
#include "vx3/core/Utilities.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <system_error>
#include <unistd.h>

namespace VX3 {

namespace {

constexpr std::size_t ScratchSize = 1U << 20;
constexpr std::uint32_t Raised = 1;

std::string Reason(std::int64_t result) {
    return result == 0 ? std::string("at its end") : std::generic_category().message(errno);
}

} // namespace

StatusCode KdNode::Open() {
    if (fd_)
        return Status::Ok;
    fd_ = UniqueFd(::open(path_.c_str(), O_RDONLY | O_SYNC | O_CLOEXEC | flags_));
    if (fd_)
        return Status::Ok;
    return SetLastFailure(Status::OpenFailed, path_ + ": " + std::generic_category().message(errno));
}

void KdNode::Tell(const std::string& failure) {
    if (told_)
        return;
    told_ = true;
    VxLoggerLog(LogLevel::Error, "SDK", "%s: %s", path_.c_str(), failure.c_str());
}

// ---- DMA ----

// The node's position does not move by reads.
std::int64_t KdDmaNode::ReadSome(std::uint64_t offset, unsigned char* target, std::size_t length) {
    ssize_t got = -1;
    do
        got = ::pread(Fd(), target, length, static_cast<off_t>(offset));
    while (got < 0 && errno == EINTR);
    if (got <= 0)
        Tell(StringFormat("%zu bytes at 0x%llx cannot be read: %s", length,
                          static_cast<unsigned long long>(offset), Reason(got).c_str()));
    else if (HasLogListener(LogLevel::Debug))
        VxLoggerLog(LogLevel::Debug, "SDK", "0x%zx bytes readed from frame device", static_cast<size_t>(got));
    return got > 0 ? got : -1;
}

StatusCode KdDmaNode::Read(std::uint64_t offset, unsigned char* target, std::uint32_t length,
                           const std::atomic<bool>& run) {
    for (std::uint32_t done = 0; done < length;) {
        if (!run)
            return Status::WrongState;
        const std::int64_t got = ReadSome(offset + done, target + done, length - done);
        if (got < 0)
            return Status::WrongState;
        done += static_cast<std::uint32_t>(got);
    }
    Works();
    return Status::Ok;
}

StatusCode KdDmaNode::Drain(std::uint64_t offset, std::uint32_t length, const std::atomic<bool>& run) {
    if (!scratch_)
        scratch_.reset(new unsigned char[ScratchSize]);
    const auto total = static_cast<std::uint32_t>(std::min<std::uint64_t>(length, CardMemory));
    for (std::uint32_t done = 0; done < total;) {
        const auto piece = static_cast<std::uint32_t>(std::min<std::size_t>(total - done, ScratchSize));
        const StatusCode status = Read(offset + done, scratch_.get(), piece, run);
        if (Failed(status))
            return status;
        done += piece;
    }
    return Status::Ok;
}

// ---- events ----

// Never waits but in poll.
KdEventNode::KdEventNode(std::string path) : KdNode(std::move(path), O_NONBLOCK) {}

KdEventNode::Result KdEventNode::Wait(std::chrono::milliseconds time) {
    pollfd wait{Fd(), POLLIN, 0};
    const int ready = ::poll(&wait, 1, static_cast<int>(time.count()));
    if (ready == 0 || (ready < 0 && errno == EINTR))
        return Result::Silence;
    std::uint32_t value = 0;
    const ssize_t got = ready < 0 ? -1 : ::read(Fd(), &value, sizeof(value));
    if (got < 0 && (errno == EAGAIN || errno == EINTR))
        return Result::Silence;
    if (got <= 0) {
        Tell("no event can be read: " + Reason(got));
        return Result::Failed;
    }
    Works();
    if (got == static_cast<ssize_t>(sizeof(value)) && value == Raised)
        return Result::Event;
    if (HasLogListener(LogLevel::Debug))
        VxLoggerLog(LogLevel::Debug, "SDK", "bytesReaded :%zd eventResult: %u, unexpected!", got, value);
    return Result::Unexpected;
}

} // namespace VX3
