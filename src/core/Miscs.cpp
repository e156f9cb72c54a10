#include "vx3/core/Utilities.h"

namespace VX3::Miscs {

unsigned int CeilingPower2(unsigned int v) {
    --v;
    v |= v >> 1;
    v |= v >> 2;
    v |= v >> 4;
    v |= v >> 8;
    v |= v >> 16;
    return v + 1;
}

unsigned int LeadingZeros(unsigned int v) {
    return v == 0 ? 32U : static_cast<unsigned int>(__builtin_clz(v));
}

unsigned int FirstNotZero(unsigned int v) {
    return v == 0 ? 32U : 31U - LeadingZeros(v);
}

unsigned int LastNotZero(unsigned int v) {
    return v == 0 ? 32U : static_cast<unsigned int>(__builtin_ctz(v)) + 1U;
}

} // namespace VX3::Miscs
