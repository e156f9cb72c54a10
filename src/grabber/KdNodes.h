// The device nodes that a stream reads: segments from the DMA node, interrupts from the event node. Owned by
// the stream; used by its reading thread.
#pragma once

#include "core/UniqueFd.h"
#include "vx3/core/Status.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

namespace VX3 {

class KdNode {
public:
    // `flags`: of open(2), beside those that every node is opened with.
    explicit KdNode(std::string path, int flags = 0) : path_(std::move(path)), flags_(flags) {}

    const std::string& Path() const { return path_; }
    bool IsOpen() const { return static_cast<bool>(fd_); }
    // OpenFailed, and the thread's last failure names the node. Ok when it is open already.
    [[nodiscard]] StatusCode Open();

protected:
    int Fd() const { return fd_.Get(); }
    // The reads of a node that fail one after the other are told once.
    void Tell(const std::string& failure);
    void Works() { told_ = false; }

private:
    const std::string path_;
    const int flags_;
    UniqueFd fd_;
    bool told_ = false;
};

class KdDmaNode : public KdNode {
public:
    // A segment cannot be longer than the card's memory.
    static constexpr std::uint64_t CardMemory = 512U << 20;

    using KdNode::KdNode;

    // All of `length` bytes, in as many reads as it takes; ends early, with WrongState, once `run` is false.
    // Any other failure of a read is WrongState, too.
    [[nodiscard]] StatusCode Read(std::uint64_t offset, unsigned char* target, std::uint32_t length,
                                  const std::atomic<bool>& run);
    // Reads and drops as much.
    [[nodiscard]] StatusCode Drain(std::uint64_t offset, std::uint32_t length, const std::atomic<bool>& run);

private:
    // Bytes read, or -1.
    std::int64_t ReadSome(std::uint64_t offset, unsigned char* target, std::size_t length);

    std::unique_ptr<unsigned char[]> scratch_; // made when first needed
};

class KdEventNode : public KdNode {
public:
    enum class Result { Event, Silence, Unexpected, Failed };

    explicit KdEventNode(std::string path);

    // Event: the card has raised its interrupt. Unexpected: something else than one event was read. Failed:
    // the node is at its end, or gave an error.
    Result Wait(std::chrono::milliseconds time);
};

} // namespace VX3
