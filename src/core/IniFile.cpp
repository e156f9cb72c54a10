#include "core/IniFile.h"

#include <fstream>
#include <stdexcept>

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
        const std::string line = Strip(text);
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

void File::write(const std::string& path) const {
    std::ofstream stream(path, std::ios::trunc);
    if (!stream)
        throw std::invalid_argument("stream is closed");
    for (const auto& [name, section] : sections_) {
        stream << '[' << name << "]\n";
        for (const auto& [key, value] : section)
            stream << key << " = " << value << '\n';
        stream << '\n';
    }
    stream.close();
    if (!stream)
        throw std::invalid_argument("stream cannot be written");
}

} // namespace ini
