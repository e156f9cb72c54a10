#include "platform/clprotocol/Manifest.h"

#include <algorithm>
#include <tuple>

namespace CLProtocol {

namespace {

constexpr std::uint8_t UnderstoodSchema = 1;
constexpr std::uint32_t FormatShift = 10;
constexpr std::uint32_t FormatMask = 0x3F;
constexpr std::uint32_t ZipFormat = 1;
constexpr std::uint32_t TypeMask = 0x7;

bool ReadEntry(VX3::WireReader& reader, ManifestEntry& entry) {
    std::uint32_t kind = 0;
    if (!reader.U32(entry.fileVersion) || !reader.U32(kind) || !reader.U64(entry.address) ||
        !reader.U64(entry.size) || !reader.Copy(entry.sha1.data(), entry.sha1.size()) || !reader.Skip(20))
        return false;
    entry.schemaMajor = static_cast<std::uint8_t>(kind >> 24);
    entry.schemaMinor = static_cast<std::uint8_t>(kind >> 16);
    entry.zipped = ((kind >> FormatShift) & FormatMask) == ZipFormat;
    entry.describesDevice = (kind & TypeMask) == 0;
    return true;
}

// Greater is better. Old devices say nothing of their schema.
auto Rank(const ManifestEntry& entry) {
    return std::make_tuple(entry.schemaMajor <= UnderstoodSchema, entry.schemaMajor, entry.schemaMinor,
                           entry.fileVersion);
}

} // namespace

std::vector<ManifestEntry> DeviceDescriptions(VX3::WireBytes table) {
    std::vector<ManifestEntry> entries;
    VX3::WireReader reader(table);
    for (ManifestEntry entry; ReadEntry(reader, entry);)
        if (entry.describesDevice && entry.size != 0)
            entries.push_back(entry);
    std::stable_sort(entries.begin(), entries.end(),
                     [](const ManifestEntry& a, const ManifestEntry& b) { return Rank(a) > Rank(b); });
    return entries;
}

} // namespace CLProtocol
