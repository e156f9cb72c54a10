// How many threads the library uses to process one image.
#pragma once

#include "vx3/core/Export.h"

namespace VX3 {

// Conversions of images above one megapixel are shared out between the calling thread and a small pool that
// the whole process shares. 1 turns it off, 0 restores the default, which is the number of processors but no
// more than 4; values above 64 are taken as 64. Any thread may call; conversions under way finish first.
VX3_API void SetProcessingThreads(unsigned int threads);
// Threads in use, the calling one included.
VX3_API unsigned int ProcessingThreads();

} // namespace VX3
