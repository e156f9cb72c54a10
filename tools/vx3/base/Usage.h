// What to tell somebody whose command line is wrong.
#pragma once

#include <string>

namespace CLI {
class App;
class ParseError;
} // namespace CLI

namespace VX3::Tool {

// What is wrong with the command line that `app` refused with `error`, and what may have been meant.
std::string UsageWords(const CLI::App& app, const CLI::ParseError& error, int argc, const char* const* argv);

// Known before the command line is parsed, so that its own faults can be told as JSON.
bool WantsJson(int argc, const char* const* argv);

} // namespace VX3::Tool
