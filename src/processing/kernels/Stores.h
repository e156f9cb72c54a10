// How kernels write results: through the caches, or past them.
#pragma once

namespace VX3::Kernels {

// Streaming stores spare the reading of cache lines that are overwritten anyway, and the caches themselves;
// they pay for results that would not stay cached. Whoever asks for them fences before others read the
// result.
enum class Stores { Cached, Streaming };

} // namespace VX3::Kernels
