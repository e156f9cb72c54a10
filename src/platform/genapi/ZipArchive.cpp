#include "platform/genapi/ZipArchive.h"

#include "platform/genapi/DescriptionError.h"
#include "platform/genapi/DescriptionLimits.h"

#include <algorithm>
#include <memory>
#include <zip.h>

namespace GenApi_3_2 {
namespace Engine {

namespace {

struct CloseArchive {
    void operator()(zip_t* archive) const { zip_discard(archive); }
};
struct CloseEntry {
    void operator()(zip_file_t* entry) const { zip_fclose(entry); }
};
using Archive = std::unique_ptr<zip_t, CloseArchive>;
using Entry = std::unique_ptr<zip_file_t, CloseEntry>;

Archive Open(std::string_view bytes, const std::string& fileName) {
    zip_error_t error;
    zip_error_init(&error);
    zip_t* archive = nullptr;
    if (zip_source_t* source = zip_source_buffer_create(bytes.data(), bytes.size(), 0, &error)) {
        archive = zip_open_from_source(source, ZIP_RDONLY, &error);
        if (archive == nullptr)
            zip_source_free(source);
    }
    const std::string reason = archive == nullptr ? zip_error_strerror(&error) : "";
    zip_error_fini(&error);
    if (archive == nullptr)
        ThrowDescriptionError(fileName, 0, {}, "zip archive cannot be read: " + reason);
    return Archive(archive);
}

bool IsXmlName(std::string_view name) {
    constexpr std::string_view extension = ".xml";
    if (name.size() < extension.size())
        return false;
    name.remove_prefix(name.size() - extension.size());
    return std::equal(name.begin(), name.end(), extension.begin(), [](char a, char b) {
        return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b;
    });
}

zip_uint64_t FindDescription(zip_t* archive, const std::string& fileName) {
    const zip_int64_t count = zip_get_num_entries(archive, 0);
    zip_int64_t found = -1;
    for (zip_int64_t i = 0; i < count; ++i) {
        const char* name = zip_get_name(archive, static_cast<zip_uint64_t>(i), ZIP_FL_ENC_RAW);
        if (name == nullptr || !IsXmlName(name))
            continue;
        if (found >= 0)
            ThrowDescriptionError(fileName, 0, {}, "zip archive holds more than one .xml file");
        found = i;
    }
    if (found < 0)
        ThrowDescriptionError(fileName, 0, {}, "zip archive holds no .xml file");
    return static_cast<zip_uint64_t>(found);
}

} // namespace

bool IsZipArchive(std::string_view bytes) {
    const std::string_view signature = bytes.substr(0, 4);
    return signature == std::string_view("PK\x03\x04", 4) || signature == std::string_view("PK\x05\x06", 4);
}

// The size in the directory is a claim: the text grows with what really comes out, up to the limit.
std::string UnzipDescription(std::string_view bytes, const std::string& fileName) {
    if (bytes.size() > MaxDescriptionArchive)
        ThrowDescriptionError(fileName, 0, {}, "zip archive is larger than 4 MiB");
    const Archive archive = Open(bytes, fileName);
    const Entry entry(zip_fopen_index(archive.get(), FindDescription(archive.get(), fileName), 0));
    if (!entry)
        ThrowDescriptionError(fileName, 0, {},
                              std::string("zip archive cannot be read: ") + zip_strerror(archive.get()));
    std::string text;
    constexpr std::size_t step = 256 * 1024;
    for (;;) {
        const std::size_t used = text.size();
        text.resize(used + step);
        const zip_int64_t got = zip_fread(entry.get(), &text[used], step);
        if (got < 0)
            ThrowDescriptionError(fileName, 0, {},
                                  std::string("zip archive is damaged: ") + zip_file_strerror(entry.get()));
        text.resize(used + static_cast<std::size_t>(got));
        if (got == 0)
            return text;
        if (text.size() > MaxDescriptionText)
            ThrowDescriptionError(fileName, 0, {}, "unzipped description is larger than 16 MiB");
    }
}

} // namespace Engine
} // namespace GenApi_3_2
