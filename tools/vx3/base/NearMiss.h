// Names as people type them: case hardly matters, and what is nearly right is recognised.
#pragma once

#include <string>
#include <vector>

namespace VX3::Tool {

std::string Lower(std::string text);

// The name that is `text`, else the only one that differs from it in case alone, else null.
const std::string* FindName(const std::vector<std::string>& names, const std::string& text);

// "; did you mean Width or Height?" with at most three names that are near `text`; empty when none is.
std::string DidYouMean(const std::string& text, const std::vector<std::string>& names);

// "A, B, C and 40 more".
std::string Listed(const std::vector<std::string>& names, std::size_t most);

} // namespace VX3::Tool
