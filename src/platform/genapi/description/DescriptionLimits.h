// What a description may cost. Cameras publish up to 1.3 MB and 4,000 nodes; these limits leave ten times
// that and keep a hostile file within 64 MiB of memory, parser and records together.
#pragma once

#include <cstddef>

namespace GenApi_3_2 {
namespace Engine {

constexpr std::size_t MaxDescriptionText = 16u << 20;   // bytes of XML
constexpr std::size_t MaxDescriptionArchive = 4u << 20; // bytes of a zipped description
constexpr std::size_t MaxDescriptionMemory = 48u << 20; // the XML, its tree and its records
constexpr std::size_t MaxDescriptionNodes = 32768;      // entries of enumerations included
constexpr std::size_t MaxDescriptionElements = 200000;  // after structures are expanded
constexpr std::size_t MaxDescriptionArena = 4u << 20;   // bytes of texts put together
constexpr std::size_t MaxFormulaText = 1u << 20;        // bytes of all formulas together
constexpr std::size_t MaxNodeName = 512;                // characters
constexpr int MaxDescriptionDepth = 64;                 // elements inside elements
constexpr std::size_t MaxElementAttributes = 64;        // of one element

} // namespace Engine
} // namespace GenApi_3_2
