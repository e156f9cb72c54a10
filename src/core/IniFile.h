// Minimal INI reader and writer behind the configuration object. Order, comments and blank lines of a file
// are not kept.
#pragma once

#include <istream>
#include <string>
#include <unordered_map>

namespace ini {

// Keys and values of one section.
class Section {
public:
    using Map = std::unordered_map<std::string, std::string>;

    std::size_t size() const { return values_.size(); }
    // Null when the key is missing.
    const std::string* Find(const std::string& key) const;
    // The value of `key`, created empty when it is missing. An empty key throws std::invalid_argument.
    std::string& operator[](const std::string& key);
    Map::const_iterator begin() const { return values_.begin(); }
    Map::const_iterator end() const { return values_.end(); }

private:
    Map values_;
};

// Throws std::invalid_argument for what would not be read back as it was written: empty names, line ends,
// keys that look like something else.
void CheckEntry(const std::string& section, const std::string& key, const std::string& value);

// Sections by name. Every failure is a std::invalid_argument that says what is wrong; after a failed read the
// map is left as far as it was filled.
class File {
public:
    using Map = std::unordered_map<std::string, Section>;

    std::size_t size() const { return sections_.size(); }
    // Null when the section is missing.
    const Section* Find(const std::string& name) const;
    // The section of that name, created empty when it is missing.
    Section& operator[](const std::string& name) { return sections_[name]; }
    Map::const_iterator begin() const { return sections_.begin(); }
    Map::const_iterator end() const { return sections_.end(); }

    // Adds the stream's sections; sections of one name merge.
    void read(std::istream& stream);
    // Replaces the file as a whole (vx3/core/ReplaceFile.h).
    void write(const std::string& path) const;

private:
    Map sections_;
};

} // namespace ini
