// A list of GenApi strings.
#pragma once

#include "Base/GCString.h"

#include <vector>

namespace GenICam_3_2 {

using gcstring_vector = std::vector<gcstring>;

} // namespace GenICam_3_2
