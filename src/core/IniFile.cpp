#include "core/IniFile.h"

#include "vx3/core/ReplaceFile.h"

#include <cerrno>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace ini {

namespace {

// Spaces only: tabs are part of names and values.
std::string Strip(const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

bool IsOpen(const std::istream& stream) {
    const auto* file = dynamic_cast<const std::ifstream*>(&stream);
    return stream.good() && (file == nullptr || file->is_open());
}

// Files from other systems end their lines with a carriage return as well.
std::string WithoutReturns(const std::string& line) {
    return line.substr(0, line.find_last_not_of(" \r") + 1);
}

void RefuseLineEnds(const std::string& text, const char* what) {
    if (text.find_first_of("\n\r") != std::string::npos)
        throw std::invalid_argument(std::string(what) + " cannot hold line ends");
}

void AddLine(Section& section, const std::string& line, std::size_t separator) {
    const std::string key = Strip(line.substr(0, separator));
    if (!key.empty() && section.Find(key) != nullptr)
        throw std::invalid_argument("key already exists");
    section[key] = Strip(line.substr(separator + 1));
}

} // namespace

const std::string* Section::Find(const std::string& key) const {
    const auto entry = values_.find(key);
    return entry != values_.end() ? &entry->second : nullptr;
}

std::string& Section::operator[](const std::string& key) {
    if (key.empty())
        throw std::invalid_argument("keys cannot be empty");
    return values_[key];
}

const Section* File::Find(const std::string& name) const {
    const auto entry = sections_.find(name);
    return entry != sections_.end() ? &entry->second : nullptr;
}

void File::read(std::istream& stream) {
    if (!IsOpen(stream))
        throw std::invalid_argument("stream is closed");
    Section* section = nullptr;
    std::string text;
    while (std::getline(stream, text)) {
        const std::string line = Strip(WithoutReturns(text));
        if (line.empty())
            continue;
        if (const std::size_t end = line.rfind(']'); line[0] == '[' && end != std::string::npos) {
            const std::string name = line.substr(1, end - 1);
            if (name.empty())
                throw std::invalid_argument("section headers cannot be empty");
            section = &sections_[name];
            continue;
        }
        if (line[0] == ';' || line[0] == '#')
            continue;
        const std::size_t separator = line.find_first_of("=:");
        if (separator == std::string::npos)
            continue;
        if (section == nullptr)
            throw std::invalid_argument("file is missing a section header");
        AddLine(*section, line, separator);
    }
    if (stream.bad())
        throw std::invalid_argument("stream cannot be read");
}

void CheckEntry(const std::string& section, const std::string& key, const std::string& value) {
    if (section.empty())
        throw std::invalid_argument("section headers cannot be empty");
    if (key.empty())
        throw std::invalid_argument("keys cannot be empty");
    RefuseLineEnds(section, "section headers");
    RefuseLineEnds(key, "keys");
    RefuseLineEnds(value, "values");
    if (key.find_first_of("=:") != std::string::npos || key[0] == '[' || key[0] == ';' || key[0] == '#')
        throw std::invalid_argument("keys cannot hold separators, nor begin like a header or a comment");
}

void File::write(const std::string& path) const {
    std::string content;
    for (const auto& [name, section] : sections_) {
        content += "[" + name + "]\n";
        for (const auto& [key, value] : section)
            content.append(key).append(" = ").append(value).append("\n");
        content += '\n';
    }
    const int error = VX3::ReplaceFile(path, content);
    if (error == 0)
        return;
    const bool full = error == ENOSPC || error == EDQUOT || error == EFBIG || error == EIO;
    throw std::invalid_argument((full ? "stream cannot be written: " : "stream is closed: ") +
                                std::system_category().message(error));
}

} // namespace ini
