#include "platform/archive/ZipArchive.h"

#include <algorithm>
#include <memory>
#include <zip.h>

namespace VX3 {
namespace {

struct CloseArchive {
    void operator()(zip_t* archive) const { zip_discard(archive); }
};
struct CloseEntry {
    void operator()(zip_file_t* entry) const { zip_fclose(entry); }
};
using Archive = std::unique_ptr<zip_t, CloseArchive>;
using Entry = std::unique_ptr<zip_file_t, CloseEntry>;

std::string Size(std::size_t bytes) {
    constexpr std::size_t MiB = 1u << 20;
    return bytes % MiB == 0 ? std::to_string(bytes / MiB) + " MiB" : std::to_string(bytes) + " bytes";
}

Archive Open(std::string_view bytes, std::string& failure) {
    zip_error_t error;
    zip_error_init(&error);
    zip_t* archive = nullptr;
    if (zip_source_t* source = zip_source_buffer_create(bytes.data(), bytes.size(), 0, &error)) {
        archive = zip_open_from_source(source, ZIP_RDONLY, &error);
        if (archive == nullptr)
            zip_source_free(source);
    }
    if (archive == nullptr)
        failure = std::string("zip archive cannot be read: ") + zip_error_strerror(&error);
    zip_error_fini(&error);
    return Archive(archive);
}

bool HasExtension(std::string_view name, std::string_view extension) {
    if (name.size() < extension.size())
        return false;
    name.remove_prefix(name.size() - extension.size());
    return std::equal(name.begin(), name.end(), extension.begin(), [](char a, char b) {
        return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b;
    });
}

// The index of the only file with this extension, -1 when there is none or more than one.
zip_int64_t FindOnly(zip_t* archive, std::string_view extension, std::string& failure) {
    const zip_int64_t count = zip_get_num_entries(archive, 0);
    zip_int64_t found = -1;
    for (zip_int64_t i = 0; i < count; ++i) {
        const char* name = zip_get_name(archive, static_cast<zip_uint64_t>(i), ZIP_FL_ENC_RAW);
        if (name == nullptr || !HasExtension(name, extension))
            continue;
        if (found >= 0) {
            failure = "zip archive holds more than one " + std::string(extension) + " file";
            return -1;
        }
        found = i;
    }
    if (found < 0)
        failure = "zip archive holds no " + std::string(extension) + " file";
    return found;
}

// The size in the directory is a claim: the bytes grow with what really comes out, up to the limit.
void ReadAll(zip_file_t* entry, std::size_t limit, ZipContent& content) {
    constexpr std::size_t Step = 256 * 1024;
    for (;;) {
        const std::size_t used = content.bytes.size();
        content.bytes.resize(used + Step);
        const zip_int64_t got = zip_fread(entry, &content.bytes[used], Step);
        content.bytes.resize(used + static_cast<std::size_t>(std::max<zip_int64_t>(got, 0)));
        if (got < 0)
            content.failure = std::string("zip archive is damaged: ") + zip_file_strerror(entry);
        else if (content.bytes.size() > limit)
            content.failure = "unzipped file is larger than " + Size(limit);
        if (got <= 0 || !content.failure.empty())
            return;
    }
}

// Whoever lies about the size of what came out may have put something else in its place.
void CheckSize(zip_t* archive, zip_uint64_t index, ZipContent& content) {
    zip_stat_t claims;
    if (zip_stat_index(archive, index, 0, &claims) != 0 || (claims.valid & ZIP_STAT_SIZE) == 0 ||
        claims.size != content.bytes.size())
        content.failure = "zip archive is damaged: its directory gives the file another size than it has";
}

} // namespace

bool IsZipArchive(std::string_view bytes) {
    const std::string_view signature = bytes.substr(0, 4);
    return signature == std::string_view("PK\x03\x04", 4) || signature == std::string_view("PK\x05\x06", 4);
}

ZipContent UnzipOnly(std::string_view bytes, std::string_view extension, const ZipLimits& limits) {
    ZipContent content;
    if (bytes.size() > limits.archive) {
        content.failure = "zip archive is larger than " + Size(limits.archive);
        return content;
    }
    const Archive archive = Open(bytes, content.failure);
    const zip_int64_t index = archive ? FindOnly(archive.get(), extension, content.failure) : -1;
    if (index < 0)
        return content;
    if (const Entry entry{zip_fopen_index(archive.get(), static_cast<zip_uint64_t>(index), 0)})
        ReadAll(entry.get(), limits.content, content);
    else
        content.failure = std::string("zip archive cannot be read: ") + zip_strerror(archive.get());
    if (content.failure.empty())
        CheckSize(archive.get(), static_cast<zip_uint64_t>(index), content);
    if (!content.failure.empty())
        std::string().swap(content.bytes);
    return content;
}

std::string ZipOne(const std::string& name, std::string_view content) {
    zip_error_t error;
    zip_error_init(&error);
    std::string bytes;
    zip_source_t* const target = zip_source_buffer_create(nullptr, 0, 0, &error);
    if (target == nullptr)
        return bytes;
    zip_source_keep(target); // beyond the archive, to be read
    zip_t* const archive = zip_open_from_source(target, ZIP_TRUNCATE, &error);
    zip_source_t* const file =
        archive != nullptr ? zip_source_buffer(archive, content.data(), content.size(), 0) : nullptr;
    if (file != nullptr && zip_file_add(archive, name.c_str(), file, ZIP_FL_ENC_UTF_8) < 0)
        zip_source_free(file);
    if (archive != nullptr && zip_close(archive) != 0)
        zip_discard(archive);
    if (archive != nullptr && zip_source_open(target) == 0) {
        zip_stat_t size;
        if (zip_source_stat(target, &size) == 0 && (size.valid & ZIP_STAT_SIZE) != 0) {
            bytes.resize(size.size);
            if (zip_source_read(target, bytes.data(), size.size) != static_cast<zip_int64_t>(size.size))
                bytes.clear();
        }
        zip_source_close(target);
    }
    if (archive == nullptr)
        zip_source_free(target);
    zip_source_free(target);
    zip_error_fini(&error);
    return bytes;
}

} // namespace VX3
