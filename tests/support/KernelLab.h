// Runs a kernel beside its scalar reference, on every vector target of this machine, with its lines flush
// against guard pages.
#pragma once

#include <hwy/targets.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <random>
#include <stdexcept>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

namespace VX3::Test {

inline void ForEachTarget(const std::function<void()>& body) {
    const std::int64_t supported = hwy::SupportedTargets();
    for (std::int64_t left = supported; left != 0; left &= left - 1) {
        const std::int64_t target = left & -left;
        hwy::SetSupportedTargetsForTest(target);
        SCOPED_TRACE(hwy::TargetName(target));
        body();
    }
    hwy::SetSupportedTargetsForTest(0);
}

// Every small width, and some around the steps of long lines.
inline std::vector<std::size_t> AwkwardWidths() {
    std::vector<std::size_t> widths;
    for (std::size_t width = 0; width <= 150; ++width)
        widths.push_back(width);
    for (std::size_t width : {255, 256, 257, 511, 640, 1023, 1029, 4001})
        widths.push_back(width);
    return widths;
}

inline void FillRandom(std::uint8_t* data, std::size_t size, unsigned int seed) {
    std::mt19937 random(seed);
    std::generate(data, data + size, [&random] { return static_cast<std::uint8_t>(random() >> 8); });
}

enum class Guard { Behind, Before };

// Memory number `index` with an inaccessible page directly behind its last byte, or before its first: a
// kernel that leaves its line dies there. Kept, since mapping costs more than the kernels.
inline std::uint8_t* GuardedMemory(std::size_t index, Guard guard, std::size_t size) {
    constexpr std::size_t Most = std::size_t{1} << 20;
    static std::map<std::size_t, std::uint8_t*> kept;
    std::uint8_t*& memory = kept[index];
    if (memory == nullptr) {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        void* mapped = mmap(nullptr, Most + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        memory = static_cast<std::uint8_t*>(mapped) + page;
        if (mapped == MAP_FAILED || mprotect(memory, Most, PROT_READ | PROT_WRITE) != 0)
            throw std::runtime_error("no memory with guards");
    }
    EXPECT_LE(size, Most);
    return guard == Guard::Behind ? memory + Most - size : memory;
}

// Kernel(source, targets): `targets` buffers of `targetBytes` each.
using LineKernel = std::function<void(const std::uint8_t* source, std::uint8_t* const* targets)>;

struct LineCase {
    std::size_t sourceBytes;
    std::size_t targetBytes;
    unsigned int targets = 1;
    // Makes other sources than random bytes.
    std::function<void(std::uint8_t*)> fill = nullptr;
};

// The targets are filled alike beforehand, so bytes that must stay are compared as well.
inline void ExpectLikeReference(const LineCase& line, const LineKernel& kernel, const LineKernel& reference) {
    for (const Guard guard : {Guard::Behind, Guard::Before}) {
        std::uint8_t* source = GuardedMemory(0, guard, line.sourceBytes);
        FillRandom(source, line.sourceBytes, static_cast<unsigned int>(line.sourceBytes));
        if (line.fill)
            line.fill(source);
        std::vector<std::vector<std::uint8_t>> expected;
        std::vector<std::uint8_t*> actualPointers;
        std::vector<std::uint8_t*> expectedPointers;
        for (unsigned int i = 0; i < line.targets; ++i) {
            actualPointers.push_back(GuardedMemory(1 + i, guard, line.targetBytes));
            FillRandom(actualPointers[i], line.targetBytes, i + 1);
            expected.emplace_back(actualPointers[i], actualPointers[i] + line.targetBytes);
        }
        for (auto& target : expected)
            expectedPointers.push_back(target.data());
        kernel(source, actualPointers.data());
        reference(source, expectedPointers.data());
        for (unsigned int i = 0; i < line.targets; ++i) {
            ASSERT_TRUE(std::equal(expected[i].begin(), expected[i].end(), actualPointers[i]))
                << "target " << i << ", " << line.sourceBytes << " source bytes";
        }
    }
}

// The usual kind: kernel(source, target, arguments...), one target.
template <class Kernel, class Reference, class... Arguments>
void ExpectSameLine(const LineCase& line, const Kernel& kernel, const Reference& reference,
                    Arguments... arguments) {
    ExpectLikeReference(
        line, [&](auto* source, auto* targets) { kernel(source, targets[0], arguments...); },
        [&](auto* source, auto* targets) { reference(source, targets[0], arguments...); });
}

} // namespace VX3::Test
