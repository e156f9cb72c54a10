#include "support/GrabberCard.h"

#include <algorithm>
#include <fcntl.h>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace VX3::Test {

namespace {

constexpr std::size_t WindowSize = 0x300000;

void MakeFile(const std::string& path, std::size_t size) {
    const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0 || ftruncate(fd, static_cast<off_t>(size)) != 0)
        throw std::runtime_error("no file " + path);
    close(fd);
}

void FillMemory(const std::string& path, std::size_t size) {
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    std::vector<std::uint8_t> piece(1U << 20);
    for (std::size_t at = 0; at < size; at += piece.size()) {
        for (std::size_t i = 0; i < piece.size(); ++i)
            piece[i] = GrabberCard::Byte(at + i);
        const std::size_t count = std::min(piece.size(), size - at);
        if (write(fd, piece.data(), count) != static_cast<ssize_t>(count))
            throw std::runtime_error("no memory in " + path);
    }
    close(fd);
}

} // namespace

GrabberCard::GrabberCard(const std::string& root, unsigned int number, std::size_t memorySize)
    : path_(root + "/xdma" + std::to_string(number)) {
    for (const char* suffix : {"control", "h2c_0", "events_0", "events_1", "events_2", "events_3"})
        MakeFile(Node(suffix), 0);
    MakeFile(Node("user"), WindowSize);
    FillMemory(Node("c2h_0"), memorySize);
    if (mkfifo(Node("events_8").c_str(), 0600) != 0)
        throw std::runtime_error("no pipe");
    events_ = open(Node("events_8").c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    const int window = open(Node("user").c_str(), O_RDWR | O_CLOEXEC);
    void* base = mmap(nullptr, WindowSize, PROT_READ | PROT_WRITE, MAP_SHARED, window, 0);
    close(window);
    if (base == MAP_FAILED || events_ < 0)
        throw std::runtime_error("no card");
    registers_ = static_cast<volatile std::uint32_t*>(base);
}

GrabberCard::~GrabberCard() {
    munmap(const_cast<std::uint32_t*>(registers_), WindowSize);
    EndEvents();
}

std::uint32_t GrabberCard::Get(std::uint32_t address) const {
    return __atomic_load_n(registers_ + address / 4, __ATOMIC_ACQUIRE);
}

void GrabberCard::Put(std::uint32_t address, std::uint32_t value) {
    __atomic_store_n(registers_ + address / 4, value, __ATOMIC_RELEASE);
}

bool GrabberCard::AwaitReady(std::chrono::milliseconds wait) {
    const auto end = std::chrono::steady_clock::now() + wait;
    while (Get(Ready) != 1) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::microseconds(20));
    }
    Put(Ready, 0);
    return true;
}

void GrabberCard::Lay(const CardSegment& segment) {
    Put(0x202010, static_cast<std::uint32_t>(segment.offset));
    Put(0x202014, static_cast<std::uint32_t>(segment.offset >> 32));
    Put(0x202018, segment.length);
    Put(0x20201C, segment.number | (std::uint32_t{segment.count} << 16));
    Put(0x202030, segment.blockId);
    Put(0x202038, static_cast<std::uint32_t>(segment.timestamp));
    Put(0x20203C, static_cast<std::uint32_t>(segment.timestamp >> 32));
    Put(0x202044, segment.status);
}

void GrabberCard::RaiseBytes(const void* bytes, std::size_t size) {
    if (write(events_, bytes, size) != static_cast<ssize_t>(size))
        throw std::runtime_error("the pipe of interrupts is full");
}

void GrabberCard::Raise(std::uint32_t value) {
    RaiseBytes(&value, sizeof(value));
}

bool GrabberCard::Tell(const CardSegment& segment, std::chrono::milliseconds wait) {
    if (!AwaitReady(wait))
        return false;
    Lay(segment);
    Raise();
    return true;
}

void GrabberCard::EndEvents() {
    if (events_ >= 0)
        close(events_);
    events_ = -1;
}

} // namespace VX3::Test
