// The colour maps that IImage::Map2RGB8 shows samples in, by name.
#pragma once

#include "vx3/core/Export.h"

#include <string>
#include <vector>

namespace VX3 {

// "CMRmap", "jet", "viridis", ..., "Mono" (grey); a map's number is its place.
VX3_API const std::vector<std::string>& ColorMapNames();
// The number of the map with that name, whatever the case of its letters; -1 when there is none.
VX3_API int FindColorMap(const std::string& name);

} // namespace VX3
