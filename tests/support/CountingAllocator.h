// Counts allocations of the whole program: include in exactly one source file of an executable. The other
// forms of new and delete call these two.
#pragma once

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace VX3::Test {
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
} // namespace VX3::Test

__attribute__((noinline)) void* operator new(std::size_t size) {
    VX3::Test::g_allocations.fetch_add(1, std::memory_order_relaxed);
    if (size >= VX3::Test::LargeBlock)
        VX3::Test::g_largeAllocations.fetch_add(1, std::memory_order_relaxed);
    if (void* memory = std::malloc(size == 0 ? 1 : size))
        return memory;
    throw std::bad_alloc();
}
__attribute__((noinline)) void operator delete(void* memory) noexcept {
    std::free(memory);
}
__attribute__((noinline)) void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
