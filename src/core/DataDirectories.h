// Where the library's own data files lie.
#pragma once

#include <string>
#include <vector>

namespace VX3 {

// Each with a trailing "/": beside the library, where it is installed, and in the source tree it was built
// from.
std::vector<std::string> DataDirectories();

} // namespace VX3
