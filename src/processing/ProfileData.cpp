#include "vx3/image/ProfileData.h"

#include "image/BufferCreator.h"
#include "image/DefaultPools.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace VX3 {

namespace {

constexpr unsigned int EntryBytes = 8;
// What a buffer pool can serve; longer profiles are invalid.
constexpr unsigned int MostEntries = 0x80000000U / EntryBytes;

template <class Value>
StatisticsInfo StatisticsOf(const Value* first, const Value* last) {
    StatisticsInfo result;
    const auto count = static_cast<double>(last - first);
    double sum = 0;
    for (const Value* value = first; value != last; ++value)
        sum += static_cast<double>(*value);
    result.mean = sum / count;
    double squares = 0;
    for (const Value* value = first; value != last; ++value) {
        const double distance = static_cast<double>(*value) - result.mean;
        squares += distance * distance;
    }
    const auto [least, most] = std::minmax_element(first, last);
    result.min = static_cast<std::uint32_t>(std::llround(static_cast<double>(*least)));
    result.max = static_cast<std::uint32_t>(std::llround(static_cast<double>(*most)));
    result.count = static_cast<std::uint32_t>(last - first);
    result.stddev = std::sqrt(count == 1 ? squares : squares / (count - 1));
    return result;
}

} // namespace

ProfileData::ProfileData(unsigned int size, bool isFloat, bool zero)
    : size_(size <= MostEntries ? size : 0), isFloat_(isFloat) {
    if (size_ == 0)
        return;
    buffer_ = BufferCreator::Create(size_ * EntryBytes, ProfileBufferPool());
    if (zero)
        std::memset(buffer_->Pointer(), 0, std::size_t{size_} * EntryBytes);
}

const std::uint32_t* ProfileData::Data() const {
    return buffer_ == nullptr ? nullptr : reinterpret_cast<const std::uint32_t*>(buffer_->Pointer());
}

std::uint32_t* ProfileData::Data() {
    return const_cast<std::uint32_t*>(static_cast<const ProfileData*>(this)->Data());
}

const double* ProfileData::FloatData() const {
    return buffer_ == nullptr ? nullptr : reinterpret_cast<const double*>(buffer_->Pointer());
}

double* ProfileData::FloatData() {
    return const_cast<double*>(static_cast<const ProfileData*>(this)->FloatData());
}

StatisticsInfo ProfileData::CreateStatistics(unsigned int from, unsigned int to) const {
    StatisticsInfo result;
    if (!IsVaid())
        return result;
    unsigned int low = std::min(from, to);
    low = low >= size_ ? 0 : low;
    const unsigned int high = std::min(std::max(from, to), size_);
    if (low >= high) {
        result.min = 0;
        return result;
    }
    if (isFloat_)
        return StatisticsOf(FloatData() + low, FloatData() + high);
    return StatisticsOf(Data() + low, Data() + high);
}

} // namespace VX3
