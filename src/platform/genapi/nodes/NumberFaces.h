// The face of a node whose value is a T.
#pragma once

#include "platform/genapi/nodes/FloatFace.h"
#include "platform/genapi/nodes/IntegerFace.h"

#include <type_traits>

namespace GenApi_3_2 {
namespace Engine {

template <class T>
using FaceOf = std::conditional_t<std::is_same_v<T, double>, FloatFace, IntegerFace>;

} // namespace Engine
} // namespace GenApi_3_2
