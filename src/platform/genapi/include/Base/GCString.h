// The string type of every GenApi interface: a byte string in UTF-8 that may be built from C text.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

namespace GenICam_3_2 {

class gcstring {
public:
    static constexpr std::size_t npos = std::string::npos;

    gcstring() = default;
    gcstring(const char* text) : text_(text ? text : "") {} // NOLINT: conversions are the point of the type
    gcstring(const char* text, std::size_t count) : text_(text, count) {}
    gcstring(std::size_t count, char character) : text_(count, character) {}

    gcstring& assign(const char* text) { return *this = gcstring(text); }
    gcstring& assign(const char* text, std::size_t count) { return *this = gcstring(text, count); }
    gcstring& append(const gcstring& other) {
        text_ += other.text_;
        return *this;
    }
    gcstring& operator+=(const gcstring& other) { return append(other); }
    gcstring& operator+=(char character) {
        text_ += character;
        return *this;
    }

    const char* c_str() const { return text_.c_str(); }
    operator const char*() const { return text_.c_str(); } // NOLINT: so the published interface has it
    std::size_t length() const { return text_.length(); }
    std::size_t size() const { return text_.size(); }
    bool empty() const { return text_.empty(); }
    void clear() { text_.clear(); }
    void resize(std::size_t count) { text_.resize(count); }
    void swap(gcstring& other) { text_.swap(other.text_); }

    std::size_t find(char character, std::size_t from = 0) const { return text_.find(character, from); }
    std::size_t find(const gcstring& other, std::size_t from = 0) const {
        return text_.find(other.text_, from);
    }
    gcstring substr(std::size_t from = 0, std::size_t count = npos) const {
        const std::string cut = text_.substr(from, count);
        return gcstring(cut.data(), cut.size());
    }
    int compare(const gcstring& other) const { return text_.compare(other.text_); }

    bool operator==(const gcstring& other) const { return text_ == other.text_; }
    bool operator!=(const gcstring& other) const { return text_ != other.text_; }
    bool operator<(const gcstring& other) const { return text_ < other.text_; }
    bool operator>(const gcstring& other) const { return text_ > other.text_; }
    bool operator==(const char* other) const { return text_ == other; }
    bool operator!=(const char* other) const { return text_ != other; }

    friend gcstring operator+(gcstring left, const gcstring& right) { return left += right; }
    friend bool operator==(const char* left, const gcstring& right) { return right == left; }
    friend bool operator!=(const char* left, const gcstring& right) { return right != left; }
    friend std::ostream& operator<<(std::ostream& stream, const gcstring& text);

private:
    std::string text_;
};

} // namespace GenICam_3_2
