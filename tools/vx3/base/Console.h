// Where the program writes: results to standard output, everything else to standard error.
//
// The library logs to std::cout unless a log configuration stands beside it; the console takes std::cout
// over, so that its lines cannot mix with results, and shows warnings and errors (with --verbose, everything)
// on standard error. One console a process, living as long as main.
#pragma once

#include "vx3/core/Mutex.h"

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

namespace VX3 {
class ILogItem;
}

namespace VX3::Tool {

using Json = nlohmann::ordered_json;

class Console {
public:
    static Console& Instance();

    void SetVerbose(bool verbose) { verbose_ = verbose; }

    // Results; not for use by two threads at once.
    std::ostream& Out() { return out_; }
    void PrintJson(const Json& json);
    // One object a line, for verbs that report as things happen.
    void PrintJsonLine(const Json& json);

    // A line on standard error, "vx3: TEXT". Any thread.
    void Say(const std::string& text) VX3_EXCLUDES(mutex_);
    // Replaces the progress line where standard error is a terminal; nothing elsewhere.
    void Progress(const std::string& text) VX3_EXCLUDES(mutex_);
    void EndProgress() VX3_EXCLUDES(mutex_);

private:
    Console();
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    void OnLogItem(const ILogItem& item);

    std::streambuf* standardOut_;
    std::ostream out_;
    Mutex mutex_;
    bool progressShown_ VX3_GUARDED_BY(mutex_) = false;
    bool verbose_ = false;
};

// Camera texts are foreign bytes: control characters (and with them terminal escapes) become '?'.
std::string Printable(const std::string& text);
// The same, but lines stay lines.
std::string PrintableLines(const std::string& text);

// Pads to `width` columns.
std::string Padded(const std::string& text, std::size_t width);

} // namespace VX3::Tool
