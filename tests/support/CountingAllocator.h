// Counts allocations of the whole program: include in exactly one source file of an executable.
#pragma once

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace VX3 {
namespace Test {
inline std::atomic<std::uint64_t> g_allocations{0};
inline std::uint64_t Allocations() {
    return g_allocations.load(std::memory_order_relaxed);
}
// Of blocks that could hold pixels or counts; handles and small lists are below.
constexpr std::size_t LargeBlock = 4096;
inline std::atomic<std::uint64_t> g_largeAllocations{0};
inline std::uint64_t LargeAllocations() {
    return g_largeAllocations.load(std::memory_order_relaxed);
}
} // namespace Test
} // namespace VX3

__attribute__((noinline)) void* operator new(std::size_t size) {
    VX3::Test::g_allocations.fetch_add(1, std::memory_order_relaxed);
    if (size >= VX3::Test::LargeBlock)
        VX3::Test::g_largeAllocations.fetch_add(1, std::memory_order_relaxed);
    if (void* memory = std::malloc(size == 0 ? 1 : size))
        return memory;
    throw std::bad_alloc();
}
__attribute__((noinline)) void* operator new[](std::size_t size) {
    return ::operator new(size);
}
__attribute__((noinline)) void operator delete(void* memory) noexcept {
    std::free(memory);
}
__attribute__((noinline)) void operator delete[](void* memory) noexcept {
    std::free(memory);
}
__attribute__((noinline)) void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
__attribute__((noinline)) void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
