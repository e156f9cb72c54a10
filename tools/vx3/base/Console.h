// Where the program writes: results to standard output, everything else to standard error.
//
// What the library logs is printed here and not by the library itself, so that its lines keep the program's
// form: warnings and errors (with --verbose, everything) on standard error. One console a process, living as
// long as main.
#pragma once

#include "base/OutputBuffer.h"
#include "vx3/core/Mutex.h"

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

namespace VX3 {
class ILogItem;
}

namespace VX3::Tool {

using Json = nlohmann::ordered_json;

class Console {
public:
    static Console& Instance();

    void SetVerbose(bool verbose) { verbose_ = verbose; }

    // Results; not for use by two threads at once. What could not be written shows in OutputError.
    std::ostream& Out() { return out_; }
    void PrintJson(const Json& json);
    // One object a line, for verbs that report as things happen.
    void PrintJsonLine(const Json& json);
    bool HasPrintedJson() const { return jsonPrinted_; }
    // The error number of what could not be written to standard output, else 0. Any thread.
    int OutputError() const { return buffer_.Error(); }
    // Writes out what waits; false, having said why, when something was not written.
    bool Finish() VX3_EXCLUDES(mutex_);

    // A line on standard error, "vx3: TEXT". Any thread.
    void Say(const std::string& text) VX3_EXCLUDES(mutex_);
    // Replaces the progress line where standard error is a terminal, with as many of the parts as fit its
    // width; nothing elsewhere.
    void Progress(const std::vector<std::string>& parts) VX3_EXCLUDES(mutex_);
    void EndProgress() VX3_EXCLUDES(mutex_);

private:
    Console();
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    void OnLogItem(const ILogItem& item);

    OutputBuffer buffer_;
    std::ostream out_;
    Mutex mutex_;
    bool progressShown_ VX3_GUARDED_BY(mutex_) = false;
    bool verbose_ = false;
    bool jsonPrinted_ = false;
};

// Valid for any text: what is no UTF-8 is replaced, and with control characters in it all is plain ASCII.
std::string JsonText(const Json& json, int indent);

// The program's answer with --json when it failed.
Json ErrorJson(const std::string& text, int exitCode);

// Camera texts are foreign bytes: control characters (and with them terminal escapes), what turns the
// direction of writing, and what is no UTF-8 become '?'.
std::string Printable(const std::string& text);
// The same, but lines stay lines.
std::string PrintableLines(const std::string& text);

// Pads to `width` columns.
std::string Padded(const std::string& text, std::size_t width);
// Cut to `width` columns, "..." and all.
std::string Shortened(const std::string& text, std::size_t width);

} // namespace VX3::Tool
