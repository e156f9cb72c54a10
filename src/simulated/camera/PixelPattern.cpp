#include "simulated/camera/PixelPattern.h"

#include "vx3/core/Mutex.h"
#include "wire/WireCursor.h"

#include <list>
#include <vector>

namespace VX3 {
namespace Simulated {

namespace {

constexpr std::size_t LongestShift = std::size_t{1} << 16;
constexpr std::size_t FirstSize = std::size_t{16} << 20;

std::vector<std::uint8_t> MakeNoise(std::size_t size) {
    std::vector<std::uint8_t> bytes(size);
    std::uint64_t state = 0x9E3779B97F4A7C15ULL;
    for (std::size_t i = 0; i < bytes.size(); i += 8) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        Wire::Store(bytes.data() + i, state);
    }
    return bytes;
}

// Grows by doubling; what was handed out stays, and longer noise begins as shorter does.
class Noise {
public:
    const std::uint8_t* AtLeast(std::size_t size) VX3_EXCLUDES(mutex_) {
        MutexLock lock(mutex_);
        if (all_.empty() || all_.back().size() < size) {
            std::size_t room = FirstSize;
            while (room < size)
                room *= 2;
            all_.push_back(MakeNoise(room));
        }
        return all_.back().data();
    }

private:
    Mutex mutex_;
    std::list<std::vector<std::uint8_t>> all_ VX3_GUARDED_BY(mutex_);
};

} // namespace

const std::uint8_t* PixelPattern::Of(std::uint64_t blockId, std::size_t size) {
    static Noise noise;
    return size > LargestFrame ? nullptr : noise.AtLeast(size + LongestShift) + (blockId * 61) % LongestShift;
}

} // namespace Simulated
} // namespace VX3
