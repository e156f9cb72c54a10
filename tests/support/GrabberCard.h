// A frame grabber card made of files: a register window, the card's memory and a pipe of interrupts, played
// from the kernel's side by the rules that the card has. Segments are told one by one, each once the host is
// ready.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace VX3::Test {

struct CardSegment {
    std::uint32_t blockId = 1;
    std::uint16_t number = 0;
    std::uint16_t count = 1;
    std::uint64_t offset = 0;
    std::uint32_t length = 0;
    std::uint64_t timestamp = 0;
    std::uint32_t status = 0;
};

class GrabberCard {
public:
    static constexpr std::uint32_t Ready = 0x203000;

    // Makes all nodes of card `number` in the directory `root`; the memory is filled with Byte.
    GrabberCard(const std::string& root, unsigned int number, std::size_t memorySize = 1U << 20);
    ~GrabberCard();
    GrabberCard(const GrabberCard&) = delete;
    GrabberCard& operator=(const GrabberCard&) = delete;

    std::string Node(const std::string& suffix) const { return path_ + "_" + suffix; }
    static std::uint8_t Byte(std::uint64_t offset) {
        return static_cast<std::uint8_t>(offset ^ (offset >> 8) ^ (offset >> 16));
    }

    std::uint32_t Get(std::uint32_t address) const;
    void Put(std::uint32_t address, std::uint32_t value);
    // Waits for the host, lays the segment down and raises the interrupt. False when the host did not get
    // ready.
    bool Tell(const CardSegment& segment, std::chrono::milliseconds wait = std::chrono::milliseconds(3000));
    // The parts of it.
    bool AwaitReady(std::chrono::milliseconds wait);
    void Lay(const CardSegment& segment);
    void Raise(std::uint32_t value = 1);
    void RaiseBytes(const void* bytes, std::size_t size);
    // The event node is at its end from now on.
    void EndEvents();

private:
    const std::string path_;
    volatile std::uint32_t* registers_ = nullptr;
    int events_ = -1;
};

} // namespace VX3::Test
