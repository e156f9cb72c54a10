#include "base/Console.h"

#include "vx3/core/Logger.h"

#include <atomic>
#include <cstdio>
#include <iostream>
#include <unistd.h>

namespace VX3::Tool {

namespace {

// A lossy stream warns at every frame; after these, only --verbose shows more.
constexpr unsigned int MostWarnings = 10;

} // namespace

Console& Console::Instance() {
    static Console console;
    return console;
}

Console::Console() : standardOut_(std::cout.rdbuf()), out_(standardOut_) {
    std::cout.rdbuf(nullptr); // swallows what the library logs there
    VxLoggerRegisterCb([this](ILogItem* item) {
        if (item != nullptr)
            OnLogItem(*item);
    });
}

Console::~Console() {
    VxLoggerRegisterCb(nullptr);
    out_.flush();
    std::cout.rdbuf(standardOut_);
}

void Console::OnLogItem(const ILogItem& item) {
    static std::atomic<unsigned int> warnings{0};
    const std::string level = item.Level();
    if (verbose_) {
        Say(level + ": " + Printable(item.Info()));
        return;
    }
    if (level != "Warning" && level != "Error" && level != "Fatal")
        return;
    const unsigned int number = ++warnings;
    if (number <= MostWarnings)
        Say(level + ": " + Printable(item.Info()));
    else if (number == MostWarnings + 1)
        Say("further warnings of the library are not shown; --verbose shows them");
}

void Console::PrintJson(const Json& json) {
    out_ << json.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
    out_.flush();
}

void Console::PrintJsonLine(const Json& json) {
    out_ << json.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
    out_.flush();
}

void Console::Say(const std::string& text) {
    MutexLock lock(mutex_);
    std::fprintf(stderr, "%svx3: %s\n", progressShown_ ? "\r\033[K" : "", text.c_str());
    progressShown_ = false;
}

void Console::Progress(const std::string& text) {
    if (isatty(STDERR_FILENO) == 0)
        return;
    MutexLock lock(mutex_);
    std::fprintf(stderr, "\r\033[K%s", text.c_str());
    std::fflush(stderr);
    progressShown_ = true;
}

void Console::EndProgress() {
    MutexLock lock(mutex_);
    if (progressShown_)
        std::fputc('\n', stderr);
    progressShown_ = false;
}

std::string Printable(const std::string& text) {
    std::string printable = text;
    for (char& c : printable)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
            c = '?';
    return printable;
}

std::string PrintableLines(const std::string& text) {
    std::string printable = Printable(text);
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] == '\n')
            printable[i] = '\n';
    return printable;
}

std::string Padded(const std::string& text, std::size_t width) {
    return text.size() < width ? text + std::string(width - text.size(), ' ') : text;
}

} // namespace VX3::Tool
