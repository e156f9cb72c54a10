#include "platform/clprotocol/DescriptionFetch.h"

#include "platform/archive/ZipArchive.h"

#include <algorithm>
#include <cctype>

namespace CLProtocol {

namespace {

constexpr std::size_t TableHeader = 8;

bool Matches(const Sha1Digest& wanted, const std::string& bytes) {
    return std::all_of(wanted.begin(), wanted.end(), [](std::uint8_t byte) { return byte == 0; }) ||
           wanted == Sha1(bytes.data(), bytes.size());
}

} // namespace

std::vector<ManifestEntry> DescriptionFetch::Entries() {
    const std::uint64_t table = link_.Read64(GenCp::Register::ManifestTable);
    const std::uint64_t count = std::min(link_.Read64(table), MaxEntries);
    std::vector<std::uint8_t> bytes(count * ManifestEntry::Size);
    link_.Read(table + TableHeader, bytes.data(), bytes.size());
    return DeviceDescriptions({bytes.data(), bytes.size()});
}

std::string DescriptionFetch::Text(const ManifestEntry& entry, std::string& note) {
    if (entry.size > MaxStored)
        throw PortError(Failure::Malformed, link_.Path() + ": its description would be " +
                                                std::to_string(entry.size) + " bytes long");
    std::string stored(entry.size, '\0');
    link_.Read(entry.address, stored.data(), stored.size());
    if (!Matches(entry.sha1, stored))
        note = "the SHA-1 of its description is not the one in its manifest";
    if (!entry.zipped && !VX3::IsZipArchive(stored))
        return stored;
    VX3::ZipContent content = VX3::UnzipOnly(stored, ".xml");
    if (!content.failure.empty())
        throw PortError(Failure::Malformed, link_.Path() + ": description: " + content.failure);
    return std::move(content.bytes);
}

std::string DescriptionFetch::IdOf(const ManifestEntry& entry, const std::string& model) {
    std::string id = model.empty() ? "GenCP" : model;
    for (char& c : id)
        if (std::isalnum(static_cast<unsigned char>(c)) == 0 && c != '-' && c != '.')
            c = '_';
    return id + "_" + std::to_string(entry.fileVersion >> 24) + "." +
           std::to_string((entry.fileVersion >> 16) & 0xFF) + "." +
           std::to_string(entry.fileVersion & 0xFFFF);
}

} // namespace CLProtocol
