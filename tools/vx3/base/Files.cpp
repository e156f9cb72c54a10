#include "base/Files.h"

#include "base/ToolError.h"
#include "vx3/core/ReplaceFile.h"

#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

namespace VX3::Tool {

namespace {

constexpr std::size_t LargestFile = 64U * 1024 * 1024;

} // namespace

std::string ErrorWords(int error) {
    return std::system_category().message(error);
}

std::string ReadWholeFile(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rbe"), std::fclose);
    if (!file)
        throw ToolError(path + " cannot be read: " + ErrorWords(errno));
    std::string content;
    char part[65536];
    std::size_t count = 0;
    while ((count = std::fread(part, 1, sizeof part, file.get())) != 0) {
        content.append(part, count);
        if (content.size() > LargestFile)
            throw ToolError(path + " is too large to be what it should be");
    }
    if (std::ferror(file.get()) != 0)
        throw ToolError(path + " cannot be read: " + ErrorWords(errno));
    return content;
}

void WriteWholeFile(const std::string& path, const std::string& content) {
    if (const int error = ReplaceFile(path, content); error != 0)
        throw ToolError(path + " cannot be written: " + ErrorWords(error));
}

} // namespace VX3::Tool
