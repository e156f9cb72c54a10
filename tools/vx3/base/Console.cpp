#include "base/Console.h"

#include "base/Files.h"
#include "vx3/core/Logger.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace VX3::Tool {

namespace {

// A lossy stream warns at every frame; after these, only --verbose shows more.
constexpr unsigned int MostWarnings = 10;
constexpr std::size_t UsualColumns = 80;

std::size_t TerminalColumns() {
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0 ? size.ws_col : UsualColumns;
}

// The character that begins at `at`, and its length in bytes; a length of 0 for what is no UTF-8.
std::pair<std::uint32_t, std::size_t> CharacterAt(const std::string& text, std::size_t at) {
    const auto byte = [&](std::size_t i) {
        return static_cast<std::uint32_t>(static_cast<unsigned char>(text[i]));
    };
    const std::uint32_t first = byte(at);
    if (first < 0x80)
        return {first, 1};
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || at + length > text.size())
        return {0, 0};
    std::uint32_t character = first & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(at + i) & 0xC0U) != 0x80)
            return {0, 0};
        character = character << 6 | (byte(at + i) & 0x3FU);
    }
    constexpr std::uint32_t Least[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = character >= 0xD800 && character < 0xE000;
    return {character, character < Least[length] || character > 0x10FFFF || surrogate ? 0 : length};
}

bool IsControl(std::uint32_t c) {
    const bool direction = (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029 || direction;
}

std::string Masked(const std::string& text, bool keepLines) {
    std::string printable;
    for (std::size_t i = 0; i < text.size();) {
        const auto [character, length] = CharacterAt(text, i);
        if (length == 0 || (IsControl(character) && !(keepLines && character == '\n')))
            printable += '?';
        else
            printable.append(text, i, length);
        i += std::max<std::size_t>(length, 1);
    }
    return printable;
}

} // namespace

Console& Console::Instance() {
    static Console console;
    return console;
}

Console::Console() : buffer_(STDOUT_FILENO), out_(&buffer_) {
    (void)VxLoggerSetLevel(NoLogging); // said here instead; a log configuration keeps its say
    VxLoggerRegisterCb([this](ILogItem* item) {
        if (item != nullptr)
            OnLogItem(*item);
    });
}

Console::~Console() {
    VxLoggerRegisterCb(nullptr);
    out_.flush();
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
    out_ << JsonText(json, 2) << '\n';
    out_.flush();
    jsonPrinted_ = true;
}

void Console::PrintJsonLine(const Json& json) {
    out_ << JsonText(json, -1) << '\n';
    out_.flush();
    jsonPrinted_ = true;
}

bool Console::Finish() {
    EndProgress();
    out_.flush();
    if (OutputError() == 0)
        return true;
    Say("standard output cannot be written: " + ErrorWords(OutputError()));
    return false;
}

void Console::Say(const std::string& text) {
    MutexLock lock(mutex_);
    std::fprintf(stderr, "%svx3: %s\n", progressShown_ ? "\r\033[K" : "", text.c_str());
    progressShown_ = false;
}

void Console::Progress(const std::vector<std::string>& parts) {
    if (isatty(STDERR_FILENO) == 0)
        return;
    const std::size_t columns = TerminalColumns();
    std::string line;
    for (const std::string& part : parts)
        if (line.empty() || line.size() + 2 + part.size() < columns)
            line += (line.empty() ? "" : "  ") + part;
    MutexLock lock(mutex_);
    std::fprintf(stderr, "\r\033[K%s", Shortened(line, columns - 1).c_str());
    std::fflush(stderr);
    progressShown_ = true;
}

void Console::EndProgress() {
    MutexLock lock(mutex_);
    if (progressShown_)
        std::fputc('\n', stderr);
    progressShown_ = false;
}

std::string JsonText(const Json& json, int indent) {
    constexpr auto Replace = Json::error_handler_t::replace;
    const std::string text = json.dump(indent, ' ', false, Replace);
    return text == PrintableLines(text) ? text : json.dump(indent, ' ', true, Replace);
}

Json ErrorJson(const std::string& text, int exitCode) {
    return {{"error", text}, {"code", exitCode}};
}

std::string Printable(const std::string& text) {
    return Masked(text, false);
}

std::string PrintableLines(const std::string& text) {
    return Masked(text, true);
}

std::string Shortened(const std::string& text, std::size_t width) {
    if (text.size() <= width || width < 3)
        return text;
    std::size_t end = width - 3;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80) // not within a character
        --end;
    return text.substr(0, end) + "...";
}

std::string Padded(const std::string& text, std::size_t width) {
    return text.size() < width ? text + std::string(width - text.size(), ' ') : text;
}

} // namespace VX3::Tool
