#include "gentl/DescriptionUrl.h"

#include "vx3/core/Utilities.h"

#include <algorithm>
#include <cctype>

namespace VX3 {

namespace {

constexpr std::uint64_t MaxLength = 104857600; // bytes

int HexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// "%20" and the like; what is no escape stays.
std::string Unescape(const std::string& text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int high = text[i] == '%' && i + 2 < text.size() ? HexDigit(text[i + 1]) : -1;
        const int low = high >= 0 ? HexDigit(text[i + 2]) : -1;
        if (low >= 0 && high * 16 + low != 0) {
            plain += static_cast<char>(high * 16 + low);
            i += 2;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

DescriptionUrl Refuse(const std::string& url) {
    DescriptionUrl refused;
    refused.why = "its description lies at \"" + url + "\", which cannot be fetched";
    return refused;
}

DescriptionUrl Local(std::string rest, const std::string& url) {
    const std::size_t bar = rest.find('|');
    if (bar != std::string::npos)
        rest[bar] = ':';
    const std::vector<std::string> parts = SplitString(rest, ';');
    if (parts.size() != 3 || parts[0].empty())
        return Refuse(url);
    DescriptionUrl local;
    local.address = AscH2Integer(parts[1]);
    const std::uint64_t length = AscH2Integer(parts[2]);
    if (local.address == 0 || length < 1 || length > MaxLength)
        return Refuse(url);
    local.kind = DescriptionUrl::Kind::Local;
    local.name = parts[0];
    local.length = static_cast<std::uint32_t>(length);
    return local;
}

DescriptionUrl File(const std::string& rest, bool slashes, const std::string& folder,
                    const std::string& url) {
    const std::string path = Unescape(rest);
    if (path.empty() || path.find('\0') != std::string::npos)
        return Refuse(url);
    DescriptionUrl file;
    file.kind = DescriptionUrl::Kind::File;
    if (slashes && path.front() != '/')
        file.paths.push_back("/" + path);
    file.paths.push_back(path);
    if (path.front() != '/')
        file.paths.push_back(folder + path);
    return file;
}

} // namespace

DescriptionUrl ParseDescriptionUrl(const std::string& url, const std::string& folder) {
    const std::string bare = url.substr(0, url.find('?'));
    const std::size_t colon = bare.find(':');
    if (colon == std::string::npos)
        return Refuse(url);
    std::string scheme = bare.substr(0, colon);
    std::transform(scheme.begin(), scheme.end(), scheme.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    std::string rest = bare.substr(colon + 1);
    const bool slashes = rest.compare(0, 3, "///") == 0;
    if (slashes)
        rest.erase(0, 3);
    if (scheme == "local")
        return Local(std::move(rest), url);
    return scheme == "file" ? File(rest, slashes, folder, url) : Refuse(url);
}

} // namespace VX3
